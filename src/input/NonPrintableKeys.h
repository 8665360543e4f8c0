#pragma once
// The non-printing keys a keyboard-mode scanner can be told to press in place
// of the GS character, with their X keysyms and display names.
#include <cstdint>
#include <map>
#include <string>

class NonPrintableKeys {
public:
    enum KeyID : int32_t {
        NoKey = -1, F1 = 0, F2, F3, F4, F5, F6, F7, F8, F9, F10, F11, F12,
        Insert, Delete, Home, End, PgUp, PgDn, CapsLock, RightAlt, NumpadEnter,
    };

    struct KeyName {
        KeyName(std::string shortName, std::wstring fullName)
            : shortName(std::move(shortName)), fullName(std::move(fullName)) {}
        std::string shortName;
        std::wstring fullName;
    };

    // Unknown ids give an empty name and keysym 0. Nothing is inserted, so
    // reader threads may call these while the host opens another device.
    static std::wstring getKeyFullName(KeyID id);
    static uint64_t getKeyLinuxData(KeyID id);
    static std::string getKeyShortName(unsigned long keysym);
};

extern const std::map<NonPrintableKeys::KeyID, NonPrintableKeys::KeyName> objNonPrintableKeysNames;
extern const std::map<NonPrintableKeys::KeyID, uint64_t> objNonPrintableKeysKeyLinuxData;
