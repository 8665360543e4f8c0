#pragma once
#include <memory>

#include "input/DeviceSettings.h"
#include "input/InputDevice.h"

// Makes running sources. Factories hold nothing: each source keeps its own
// copy of the settings it was created with.
class InputDeviceFactory {
public:
    virtual ~InputDeviceFactory() {}
    // A running source bound to the callback, or null when the device cannot be had.
    virtual std::unique_ptr<InputDevice> create(const DeviceSettings& settings,
                                                const DataCallback& callback) const = 0;
};
