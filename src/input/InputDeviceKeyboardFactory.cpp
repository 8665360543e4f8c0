#include "input/InputDeviceKeyboardFactory.h"

#include "input/InputDeviceKeyboard.h"

std::unique_ptr<InputDevice> InputDeviceKeyboardFactory::create(const DeviceSettings& settings,
                                                                const DataCallback& callback) const
{
    auto source = std::make_unique<InputDeviceKeyboard>(callback, settings);
    if (!source->start())
        return nullptr;
    return source;
}
