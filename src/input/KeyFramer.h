#pragma once
// Frames key presses into codes the same way for every keyboard-mode reader
// (X Input or the kernel's event devices): the GS keys, the configured GS
// key, test mode's key names, the suffix, the pause that ends a code when
// there is no suffix and the bound on a code's length all live here once.
#include <optional>
#include <string>

#include "input/CodeLimit.h"

struct DeviceSettings;

class KeyFramer {
public:
    explicit KeyFramer(const DeviceSettings& settings);

    // One key press: its X keysym at the shift level in effect, whether Control
    // is held, and the byte the key types (kTypesNothing when none). When the
    // press ends a code, the code's Base64 text is returned for delivery.
    std::optional<std::wstring> press(unsigned long keysym, bool control, int typed);
    static constexpr int kTypesNothing = -1;
    // Bytes typed other than by one key (an Alt+keypad code); a single byte
    // equal to the suffix ends the code as the suffix key would.
    std::optional<std::wstring> type(const std::string& bytes);
    // Whether the keysym is the configured GS key: that key types GS only.
    bool isGsKey(unsigned long keysym) const { return keysym != 0 && keysym == gsKeysym; }

    // Events were lost: the code in progress and the rest of it, up to the
    // next suffix (or pause), are thrown away.
    void discard();
    // With no suffix, a pause in typing ends the code.
    std::optional<std::wstring> pause();
    bool waitsForPause() const { return !suffix && (skipping || !code.empty()); }

private:
    void append(const std::string& bytes);
    std::optional<std::wstring> finish();

    const std::optional<char> suffix;  // none: codes end at a pause
    const unsigned long gsKeysym;
    const bool testMode;
    std::string code;
    bool skipping = false;  // dropping a damaged or over-long code up to its end
};
