#pragma once
// Names of the external events, keyed by (equipment code | output data type).
#include <string>

// locale: 0 Russian, anything else English is decided by the caller.
const std::wstring& eventNameFor(unsigned locale, int equipmentCode, int outputDataType);
