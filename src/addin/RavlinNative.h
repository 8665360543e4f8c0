#pragma once
#include <memory>
#include <string>

#include "abi/AddInDefBase.h"
#include "abi/ComponentBase.h"
#include "abi/IMemoryManager.h"
#include "performer/RavlinPerformerBase.h"

// The component the host creates for "InputDevice" and "CardReaderDevice".
// Every device method forwards to the performer; no method throws to the host.
class RavlinNative : public IComponentBase {
public:
    explicit RavlinNative(const std::wstring& extensionName);
    ~RavlinNative() override;

    bool Init(void* connection) override;
    bool setMemManager(void* memoryManager) override;
    long GetInfo() override;
    void Done() override;

    bool RegisterExtensionAs(unsigned short** name) override;
    long GetNProps() override;
    long FindProp(const unsigned short* name) override;
    const unsigned short* GetPropName(long num, long alias) override;
    bool GetPropVal(long num, tVariant* value) override;
    bool SetPropVal(long num, tVariant* value) override;
    bool IsPropReadable(long num) override;
    bool IsPropWritable(long num) override;
    long GetNMethods() override;
    long FindMethod(const unsigned short* name) override;
    const unsigned short* GetMethodName(long num, long alias) override;
    long GetNParams(long num) override;
    bool GetParamDefValue(long num, long param, tVariant* value) override;
    bool HasRetVal(long num) override;
    bool CallAsProc(long num, tVariant* params, long count) override;
    bool CallAsFunc(long num, tVariant* result, tVariant* params, long count) override;

    void SetLocale(const unsigned short* locale) override;

    // Raises one external event; runs on the reader thread of the source.
    void OnInput(const std::wstring& source, EquipmentCode equipmentCode, OutputDataType outputDataType,
                 const std::wstring& data);

private:
    struct Method;
    static const Method methods[];

    bool GetVersion(tVariant* result, tVariant* params);
    bool GetDescription(tVariant* result, tVariant* params);
    bool GetLastError(tVariant* result, tVariant* params);
    bool GetParameters(tVariant* result, tVariant* params);
    bool SetParameter(tVariant* result, tVariant* params);
    bool Open(tVariant* result, tVariant* params);
    bool Close(tVariant* result, tVariant* params);
    bool DeviceTest(tVariant* result, tVariant* params);
    bool GetAdditionalActions(tVariant* result, tVariant* params);
    bool DoAdditionalAction(tVariant* result, tVariant* params);

    bool setString(tVariant& slot, const std::wstring& text);

    IAddInDefBaseEx* connection = nullptr;
    IMemoryManager* memory = nullptr;
    const std::wstring extensionName;
    uint32_t openCounter = 0;
    // Chooses only the description's language; events, errors and the
    // parameters document follow AppSettings::locale(). Once Russian, a
    // component stays Russian (SetLocale never switches it back).
    bool isRussian;
    std::unique_ptr<RavlinPerformerBase> performer;
};
