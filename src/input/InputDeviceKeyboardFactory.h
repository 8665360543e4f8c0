#pragma once
#include "input/InputDeviceFactory.h"

// Keyboard-mode sources: the X Input device of the configured name.
class InputDeviceKeyboardFactory : public InputDeviceFactory {
public:
    std::unique_ptr<InputDevice> create(const DeviceSettings& settings,
                                        const DataCallback& callback) const override;
};
