#pragma once
// What the component holds: the device side of every host method.
#include <functional>
#include <string>

#include "abi/DeviceCodes.h"
#include "abi/Types.h"

// (device id, equipment code, output data type, Base64 text of the code)
using InputCallback = std::function<void(const std::wstring&, EquipmentCode, OutputDataType, const std::wstring&)>;

class RavlinPerformerBase {
public:
    explicit RavlinPerformerBase(InputCallback onInput) : onInput(std::move(onInput)) {}
    virtual ~RavlinPerformerBase() {}

    virtual bool OpenDevice(const std::wstring& deviceId) = 0;
    virtual bool CloseDevice(const std::wstring& deviceId) = 0;
    virtual bool TestDevice(const std::wstring& deviceId) = 0;
    virtual std::wstring GetLastError(bool russian) = 0;
    virtual std::wstring GetParameters() = 0;
    virtual tVariant SetParameter(const wchar_t* name, const tVariant& value) = 0;
    virtual tVariant GetParameter(const wchar_t* name) = 0;

protected:
    InputCallback onInput;
};
