#include "input/InputDeviceKeyboardFactory.h"

#include "input/InputDeviceKeyboard.h"

std::unique_ptr<InputDevice> InputDeviceKeyboardFactory::create(const DeviceSettings& settings,
                                                                const DataCallback& callback) const
{
    return started<InputDeviceKeyboard>(settings, callback);
}
