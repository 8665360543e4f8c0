#pragma once
// The keyboards the kernel offers as event devices (/dev/input/event*), as
// udev lists them. A scanner in keyboard mode is one of them.
#include <string>
#include <vector>

struct EvdevKeyboard {
    std::string node;  // "/dev/input/event3"
    std::string name;  // the kernel's name, as normalisedDeviceName() gives it
    std::string ids;   // "usb:vvvv:pppp" for a USB device, else empty
};

// Every node udev marks as a keyboard, in node number order; empty without libudev.
std::vector<EvdevKeyboard> listEvdevKeyboards();

// Whether a KeyboardDevice value names this keyboard: by its name (as typed:
// it is blanked as the listed names are), or by "usb:VVVV:PPPP" (hex ids,
// either case).
bool namesKeyboard(const std::string& wanted, const EvdevKeyboard& keyboard);

// Opens a node for reading, grabbed so that its keystrokes reach nobody else
// (unless `grab` is false). Returns the descriptor, or -1 with errno saying
// why: EACCES for no permission, EBUSY when another program holds it.
int openKeyboardNode(const std::string& node, bool grab);

// Why a keyboard cannot be opened now ("" when it can), for listings.
std::string whyNotOpenable(const EvdevKeyboard& keyboard);
