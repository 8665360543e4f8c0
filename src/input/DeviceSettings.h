#pragma once
// What one source is opened with. The performer keeps the host's latest
// values in one of these; each source gets its own copy when it is created,
// so later parameter changes never reach a device already open.
#include <cstdint>
#include <string>

struct DeviceSettings {
    uint32_t port = 1;  // 0 keyboard mode, otherwise a port number (PortFamily)

    // Serial line.
    uint32_t speed = 9600;
    uint32_t dataBits = 8;  // carried: the line keeps the character size it has
    uint32_t stopBits = 0;  // carried: the line keeps the stop bits it has
    int32_t comTimeout = 5;  // ms of silence that end a partial code
    std::wstring comEncoding = L"UTF-8";  // "UTF-8" or "Windows-1251"; anything else reads as UTF-8

    // The suffix in UTF-8. A serial code ends at its last byte (none: at a
    // pause); a keyboard code at the key typing its last byte (none: Enter).
    std::string suffix = "\r";

    // Keyboard mode.
    std::string keyboardDevice;  // the device's name as normalisedDeviceName() gives it
    int32_t gsKey = -1;          // NonPrintableKeys::KeyID typed in place of GS
    bool testMode = false;       // listen without grabbing, name special keys

    // Carried from the host, consulted by no reader.
    std::wstring prefix;
    int32_t keyboardTimeout = 75;
    bool ignoreKeyboardState = true;
};
