#include "input/InputDeviceKeyboardFactory.h"

#include "input/InputDeviceEvdev.h"
#include "input/InputDeviceKeyboard.h"

// An X server that shows the device itself keeps serving it through X Input.
// Elsewhere (Xwayland, a device X does not list, no X server) the kernel's
// event device is read.
std::unique_ptr<InputDevice> InputDeviceKeyboardFactory::create(const DeviceSettings& settings,
                                                                const DataCallback& callback) const
{
    if (InputDeviceKeyboard::serverShows(settings.keyboardDevice))
        return started<InputDeviceKeyboard>(settings, callback);
    return started<InputDeviceEvdev>(settings, callback);
}
