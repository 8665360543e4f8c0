#pragma once
#include <map>
#include <memory>

#include "input/InputDeviceComPortFactory.h"
#include "input/InputDeviceKeyboardFactory.h"
#include "performer/PerformerSettings.h"
#include "performer/RavlinPerformerBase.h"

// Holds the parameters for the next device, opens sources under the component's
// ids and keeps them until they are closed.
class RavlinPerformerDesktop : public RavlinPerformerBase {
public:
    RavlinPerformerDesktop(IAddInDefBaseEx* connection, const InputCallback& onInput);
    ~RavlinPerformerDesktop() override;

    bool OpenDevice(const std::wstring& deviceId) override;
    bool CloseDevice(const std::wstring& deviceId) override;
    bool TestDevice(const std::wstring& deviceId) override;
    std::wstring GetLastError(bool russian) override;
    tVariant SetParameter(const wchar_t* name, const tVariant& value) override;
    tVariant GetParameter(const wchar_t* name) override;

    // For tests: the state the setters write.
    const InputDeviceKeyboardFactory& keyboard() const { return keyboardFactory; }
    const InputDeviceComPortFactory& comPort() const { return comPortFactory; }
    const PerformerSettings& deviceSettings() const { return *settings; }
    const std::wstring& eventName() const { return dataEventName; }
    size_t openDeviceCount() const { return devices.size(); }

private:
    void addSetters();
    bool setEquipmentType(const tVariant& value);

    InputDeviceKeyboardFactory keyboardFactory;
    InputDeviceComPortFactory comPortFactory;
    std::map<std::wstring, std::shared_ptr<InputDevice>> devices;
    std::wstring dataEventName;
    std::wstring equipmentType;
    std::unique_ptr<PerformerSettings> settings;
};
