#pragma once
// Gives a program a /dev of its own: it re-executes itself under `unshare -m`
// (`unshare -rm` for an ordinary user), then mounts a tmpfs over /dev holding
// only a devpts instance of its own with its ptmx, and the plain character
// devices. The program then creates the
// serial nodes it needs, so the driver's fixed /dev paths lead to
// pseudo-terminals it controls, and the machine's /dev is never touched.
#include <initializer_list>
#include <string>

// Re-executes the program under `unshare` with these namespace options (and
// private mount propagation; as a mapped root for an ordinary user), unless
// the marker variable says it already runs there; the re-executed program
// sees the marker set and returns at once.
void enterNamespaces(const char* marker, std::initializer_list<const char*> options, int argc, char** argv);

// Call first in main(). Exits the process with a message if it cannot be done.
void enterPrivateDev(int argc, char** argv);

// /dev/<name> as a symlink to target (replacing any earlier one), or removed.
void linkDevice(const std::string& name, const std::string& target);
void unlinkDevice(const std::string& name);
