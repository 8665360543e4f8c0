#pragma once
#include <map>
#include <memory>

#include "input/DeviceSettings.h"
#include "input/InputDeviceComPortFactory.h"
#include "input/InputDeviceKeyboardFactory.h"
#include "performer/PerformerSettings.h"
#include "performer/RavlinPerformerBase.h"

// Holds the parameters for the next device, opens sources under the component's
// ids and keeps them until they are closed.
class RavlinPerformerDesktop : public RavlinPerformerBase {
public:
    explicit RavlinPerformerDesktop(const InputCallback& onInput);
    ~RavlinPerformerDesktop() override;

    bool OpenDevice(const std::wstring& deviceId) override;
    bool CloseDevice(const std::wstring& deviceId) override;
    bool TestDevice(const std::wstring& deviceId) override;
    std::wstring GetLastError(bool russian) override;
    tVariant SetParameter(const wchar_t* name, const tVariant& value) override;
    tVariant GetParameter(const wchar_t* name) override;

    // For tests: the state the setters write.
    const DeviceSettings& nextDevice() const { return next; }
    const PerformerSettings& deviceSettings() const { return *settings; }
    size_t openDeviceCount() const { return devices.size(); }

private:
    void addSetters();
    bool setEquipmentType(const tVariant& value);
    const InputDeviceFactory& factoryFor(const DeviceSettings& device) const;

    InputDeviceKeyboardFactory keyboardFactory;
    InputDeviceComPortFactory comPortFactory;
    DeviceSettings next;  // what the next Open or DeviceTest starts from
    std::map<std::wstring, std::unique_ptr<InputDevice>> devices;
    std::unique_ptr<PerformerSettings> settings;
};
