#pragma once
#include <cstdint>
#include <string>

#include "input/InputDeviceFactory.h"

// Settings of a keyboard-mode source: which X Input device to bind and how to
// frame what it types.
class InputDeviceKeyboardFactory : public InputDeviceFactory {
public:
    std::unique_ptr<InputDevice> create(const DataCallback& callback) const override;

    int32_t portNumber = 0;
    std::wstring suffix;  // one character; empty means carriage return
    std::wstring prefix;  // carried, not consulted by the reader
    int32_t keyboardTimeout = 75;  // carried, not consulted by the reader
    int32_t gsKey = -1;            // NonPrintableKeys::KeyID typed in place of GS
    bool testMode = false;         // select instead of grab, name special keys
    std::wstring keyboardDevice;   // X Input device name
    bool ignoreKeyboardState = true;  // carried, not consulted by the reader
};
