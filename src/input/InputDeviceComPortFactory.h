#pragma once
#include "input/InputDeviceFactory.h"

// Serial sources: the port number picks the node (PortFamily).
class InputDeviceComPortFactory : public InputDeviceFactory {
public:
    std::unique_ptr<InputDevice> create(const DeviceSettings& settings,
                                        const DataCallback& callback) const override;
};
