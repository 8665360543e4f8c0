#include "input/InputDeviceKeyboardFactory.h"

#include "input/InputDeviceKeyboard.h"

std::unique_ptr<InputDevice> InputDeviceKeyboardFactory::create(const DataCallback& callback) const
{
    auto source = std::make_unique<InputDeviceKeyboard>(callback, *this);
    if (!source->start())
        return nullptr;
    return source;
}
