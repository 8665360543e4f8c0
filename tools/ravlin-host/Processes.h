#pragma once
// Other programs as /proc shows them: which hold a device, which run by name.
// /proc shows another user's descriptors to root only, so an ordinary user
// learns of fewer holders than there are.
#include <string>

// "PID (name)" of every process with the device open, comma-separated; empty
// when none has or /proc does not tell.
std::string holdersOf(const std::string& path);

// "PID" of a process whose name (comm) is `name`, or empty when none runs.
std::string processNamed(const std::string& name);
