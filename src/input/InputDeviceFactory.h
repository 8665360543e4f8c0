#pragma once
#include <memory>

#include "input/DeviceSettings.h"
#include "input/InputDevice.h"

// Makes running sources. Factories hold nothing: each source keeps its own
// copy of the settings it was created with.
class InputDeviceFactory {
public:
    virtual ~InputDeviceFactory() {}
    // A running source bound to the callback, or null when the device cannot be had.
    virtual std::unique_ptr<InputDevice> create(const DeviceSettings& settings,
                                                const DataCallback& callback) const = 0;

protected:
    // A source of that class, started; null when it cannot start.
    template <class Source>
    static std::unique_ptr<InputDevice> started(const DeviceSettings& settings, const DataCallback& callback)
    {
        auto source = std::make_unique<Source>(callback, settings);
        if (!source->start())
            return nullptr;
        return source;
    }
};
