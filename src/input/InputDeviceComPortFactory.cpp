#include "input/InputDeviceComPortFactory.h"

#include "input/InputDeviceComPort.h"

std::unique_ptr<InputDevice> InputDeviceComPortFactory::create(const DeviceSettings& settings,
                                                               const DataCallback& callback) const
{
    auto source = std::make_unique<InputDeviceComPort>(callback, settings);
    if (!source->start())
        return nullptr;
    return source;
}
