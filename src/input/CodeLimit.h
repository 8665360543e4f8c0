#pragma once
// The longest code any reader assembles. No real scan comes near it; a longer
// run (line noise, a key flood, an endless report chain) is dropped whole, so
// a flooding device cannot exhaust memory.
#include <cstddef>

inline constexpr size_t kMaxCodeBytes = 1 << 20;
