#pragma once
#include "input/InputDeviceFactory.h"

// Keyboard-mode sources: the X Input device of the configured name, or the
// kernel event device of that name (or usb: ids) where X does not show it.
class InputDeviceKeyboardFactory : public InputDeviceFactory {
public:
    std::unique_ptr<InputDevice> create(const DeviceSettings& settings,
                                        const DataCallback& callback) const override;
};
