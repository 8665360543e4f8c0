#include "input/InputDeviceKeyboardFactory.h"

std::unique_ptr<InputDevice> InputDeviceKeyboardFactory::create(const DataCallback&) const
{
    return nullptr;
}
