#include "input/InputDeviceComPortFactory.h"

#include "input/InputDeviceComPort.h"

std::unique_ptr<InputDevice> InputDeviceComPortFactory::create(const DeviceSettings& settings,
                                                               const DataCallback& callback) const
{
    return started<InputDeviceComPort>(settings, callback);
}
