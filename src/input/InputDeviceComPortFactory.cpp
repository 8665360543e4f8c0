#include "input/InputDeviceComPortFactory.h"

#include "input/InputDeviceComPort.h"
#include "input/InputDeviceHidPos.h"
#include "input/PortFamily.h"

std::unique_ptr<InputDevice> InputDeviceComPortFactory::create(const DeviceSettings& settings,
                                                               const DataCallback& callback) const
{
    const PortFamily* family = portFamilyOf(settings.port);
    if (family && family->hidPos)
        return started<InputDeviceHidPos>(settings, callback);
    return started<InputDeviceComPort>(settings, callback);
}
