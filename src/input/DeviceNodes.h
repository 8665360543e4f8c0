#pragma once
// What the machine offers: serial device nodes under /dev and the keyboard
// devices of the X server. Both are found in-process: no shell is started
// inside the host, and no X error can reach Xlib's handlers.
#include <string>
#include <vector>

// Paths under `root` whose names start with `prefix`, as `find ROOT -name
// "PREFIX*"` prints them: recursive, symbolic links listed but not followed.
// The root is opened without a trailing slash: the device testbeds of the
// tests (umockdev) take "/dev/" for a device node of that name.
std::vector<std::string> findDeviceNodes(const std::string& prefix, const std::string& root = "/dev");

// A device's name as settings store it and readers compare it: markup,
// control and non-ASCII bytes blanked (the settings form cannot carry them), so the name
// the form offered always finds its device again.
std::string normalisedDeviceName(std::string name);

// Names of the X input devices of the keyboard type on the default display, in
// the server's order; empty when no display can be reached.
std::vector<std::string> listKeyboardDeviceNames();

// The KeyboardDevice choices, normalised: the X keyboards, then the kernel's
// keyboards X does not show (under Xwayland or with no X server, all of them).
std::vector<std::string> listKeyboardChoices();
