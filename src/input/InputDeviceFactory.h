#pragma once
#include <memory>

#include "input/InputDevice.h"

class InputDeviceFactory {
public:
    virtual ~InputDeviceFactory() {}
    // A running source bound to the callback, or null when the device cannot be had.
    virtual std::unique_ptr<InputDevice> create(const DataCallback& callback) const = 0;
};
