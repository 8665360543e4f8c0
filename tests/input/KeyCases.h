#pragma once
// One table of key sequences a keyboard-mode scanner types, with the bytes of
// the codes the driver must deliver for each. The decoder, the X Input path
// and the kernel path all run it, and a US keymap compiled by xkbcommon
// checks the cases a plain US keyboard could type.
#include <string>
#include <vector>

#include "input/DeviceSettings.h"

struct KeyStep {
    int code;   // kernel key code, or kSynDropped
    int value;  // 1 press, 0 release, 2 auto-repeat
};
constexpr int kSynDropped = -1;  // the kernel lost events here

struct KeyCase {
    std::string name;
    std::vector<KeyStep> keys;
    std::vector<std::string> codes;  // the bytes of each code delivered, in order
    int gsKey = -1;
    std::string suffix = "\r";
    bool plainUs = false;     // a US keyboard (Num Lock on) types exactly these codes
    bool kernelOnly = false;  // X cannot produce it (lost events)
};

const std::vector<KeyCase>& keyCases();

// The kernel key typing a printable ASCII character (or CR, tab) on a US
// keyboard, and whether Shift is needed; 0 for none.
int usKeyFor(char c, bool& shift);
// Key steps typing the text on a US keyboard, Left Shift around shifted keys.
std::vector<KeyStep> usText(const std::string& text);
// Steps ending a code with the case's suffix key, run after each case on a
// reader so that a stray extra code cannot go unseen; the Base64 texts the
// case and then the sentinel must give.
std::vector<KeyStep> sentinelKeys(const KeyCase& c);
std::vector<std::wstring> expectedWithSentinel(const KeyCase& c);
// The case's settings on a keyboard source of that device name.
DeviceSettings settingsFor(const KeyCase& c, const std::string& device);
