#pragma once
#include "input/InputDeviceFactory.h"

// Sources on a port: the port number picks the node (PortFamily), a serial
// line or a HID point-of-sale scanner.
class InputDeviceComPortFactory : public InputDeviceFactory {
public:
    std::unique_ptr<InputDevice> create(const DeviceSettings& settings,
                                        const DataCallback& callback) const override;
};
