#pragma once
#include <cstdint>
#include <string>

#include "input/InputDeviceFactory.h"

// Settings of a serial source, copied into each source it creates.
class InputDeviceComPortFactory : public InputDeviceFactory {
public:
    std::unique_ptr<InputDevice> create(const DataCallback& callback) const override;

    uint32_t portNumber = 1;  // 1.. ttyS, 65.. ttyACM, 129.. ttyUSB
    uint32_t speed = 9600;
    uint32_t dataBits = 8;  // carried, not applied to the line
    uint32_t stopBits = 0;  // carried, not applied to the line
    std::wstring suffix = L"\r";  // its last character ends a code; empty: a pause does
    int32_t comTimeout = 5;       // ms of silence that end a partial code
    std::wstring comEncoding;     // "UTF-8" or "Windows-1251"; anything else reads as UTF-8
};
