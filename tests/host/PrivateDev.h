#pragma once
// Gives a test program a /dev of its own: the program re-executes itself under
// `unshare -m`, then mounts a tmpfs over /dev holding only pts, ptmx and the
// plain character devices. Tests then create the serial nodes they need, so
// the driver's fixed /dev paths lead to pseudo-terminals the test controls.
#include <string>

// Call first in main(). Exits the process with a message if it cannot be done.
void enterPrivateDev(int argc, char** argv);

// /dev/<name> as a symlink to target (replacing any earlier one), or removed.
void linkDevice(const std::string& name, const std::string& target);
void unlinkDevice(const std::string& name);
