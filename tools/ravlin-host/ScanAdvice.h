#pragma once
// What one test scan says about the settings: read from the bytes the
// driver's own reader framed (with no suffix set, so a suffix the scanner adds
// stays in them) and, on the keyboard path, from the keys that typed them.
#include <string>
#include <vector>

#include "Finding.h"

struct ScanEvidence {
    enum class Path { Serial, Keyboard, HidPos };
    Path path = Path::Serial;
    std::string bytes;

    // Keyboard path.
    std::string gsForm;        // how GS was typed: "Ctrl+]", "F8", "Alt+0029"; empty when it was not
    int otherKeyId = -1;       // a GSSymbolKey choice (NonPrintableKeys) pressed inside the code, or -1
    std::string otherKeyName;  // its name
    std::vector<std::string> foreignKeys;  // keys a US keyboard does not have
    bool capsLock = false;     // Caps Lock lit or pressed
    std::string kernelNodeRule;  // when read from the kernel's node: the command that makes the rule for it

    // HID POS path.
    std::string symbology;
};

// "4006381333931<CR>": printable ASCII as it is, other bytes named.
std::string renderBytes(const std::string& bytes);

std::vector<Finding> adviceFor(const std::string& subject, const ScanEvidence& scan);
