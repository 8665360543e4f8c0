#include "input/InputDeviceComPortFactory.h"

#include "input/InputDeviceComPort.h"

std::unique_ptr<InputDevice> InputDeviceComPortFactory::create(const DataCallback& callback) const
{
    auto source = std::make_unique<InputDeviceComPort>(callback);
    if (!source->start(*this))
        return nullptr;
    return source;
}
