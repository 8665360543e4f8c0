#pragma once
// Frames key presses into codes the same way for every keyboard-mode reader
// (X Input or the kernel's event devices): the GS keys, the configured GS
// key, test mode's key names and the suffix all live here once.
#include <optional>
#include <string>

struct DeviceSettings;

class KeyFramer {
public:
    explicit KeyFramer(const DeviceSettings& settings);

    // One key press: its X keysym at the shift level in effect, whether Control
    // is held, and the byte the key types (kTypesNothing when none). When the
    // press ends a code, the code's Base64 text is returned for delivery.
    std::optional<std::wstring> press(unsigned long keysym, bool control, int typed);
    static constexpr int kTypesNothing = -1;
    // Throws away the code being assembled (events were lost).
    void discard() { code.clear(); }

private:
    const char suffix;
    const unsigned long gsKeysym;
    const bool testMode;
    std::string code;
};
