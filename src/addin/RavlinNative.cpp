#include "addin/RavlinNative.h"

#include <memory>

#include "addin/EventNames.h"
#include "abi/StringConversion.h"
#include "performer/AppSettings.h"
#include "performer/RavlinPerformerLinux.h"
#include "util/RuntimeLibrary.h"
#include "util/TextUtil.h"
#include "util/SymbolCodecs.h"

namespace {

constexpr long kMethodCount = 10;
constexpr long kComponentInfo = 2004;
constexpr long kEventQueueDepth = 4096;
const wchar_t kVersion[] = L"9.0.8.10";
const wchar_t kMakerAddress[] = L"https://zandor.ru";
const wchar_t kEquipmentType[] = L"СканерШтрихкода";  // both classes describe themselves so

struct ShortText {
    explicit ShortText(const std::wstring& text) { convToShortWchar(&units, text.c_str()); }
    ~ShortText() { delete[] units; }
    ShortText(const ShortText&) = delete;
    ShortText& operator=(const ShortText&) = delete;
    unsigned short* units = nullptr;
};

}  // namespace

struct RavlinNative::Method {
    const wchar_t* english;
    const wchar_t* russian;
    long paramCount;
    bool (RavlinNative::*call)(tVariant* result, tVariant* params);
};

const RavlinNative::Method RavlinNative::methods[kMethodCount] = {
    {L"GetVersion", L"ПолучитьНомерВерсии", 0, &RavlinNative::GetVersion},
    {L"GetDescription", L"ПолучитьОписание", 7, &RavlinNative::GetDescription},
    {L"GetLastError", L"ПолучитьОшибку", 1, &RavlinNative::GetLastError},
    {L"GetParameters", L"ПолучитьПараметры", 1, &RavlinNative::GetParameters},
    {L"SetParameter", L"УстановитьПараметр", 2, &RavlinNative::SetParameter},
    {L"Open", L"Подключить", 1, &RavlinNative::Open},
    {L"Close", L"Отключить", 1, &RavlinNative::Close},
    {L"DeviceTest", L"ТестУстройства", 2, &RavlinNative::DeviceTest},
    {L"GetAdditionalActions", L"ПолучитьДополнительныеДействия", 1, &RavlinNative::GetAdditionalActions},
    {L"DoAdditionalAction", L"ВыполнитьДополнительноеДействие", 1, &RavlinNative::DoAdditionalAction},
};


RavlinNative::RavlinNative(const std::wstring& extensionName)
    : extensionName(extensionName), isRussian(AppSettings::locale() == 0)
{
    ++liveComponents;
}

// The performer goes first: it joins the reader threads that call OnInput.
RavlinNative::~RavlinNative()
{
    performer.reset();
    --liveComponents;
}

bool RavlinNative::Init(void* connectionObject)
{
    if (!connectionObject)
        return false;
    try {
        // The earlier performer's readers call OnInput, which reads the
        // connection: they are joined before the connection changes.
        performer.reset();
        connection = static_cast<IAddInDefBaseEx*>(connectionObject);
        performer = std::make_unique<RavlinPerformerLinux>(
            [this](const std::wstring& source, EquipmentCode equipmentCode, OutputDataType outputDataType,
                   const std::wstring& data) { OnInput(source, equipmentCode, outputDataType, data); });
        return connection->SetEventQueueDepth(kEventQueueDepth);
    } catch (...) {
        return false;
    }
}

bool RavlinNative::setMemManager(void* memoryManager)
{
    memory = static_cast<IMemoryManager*>(memoryManager);
    return memory != nullptr;
}

long RavlinNative::GetInfo() { return kComponentInfo; }
void RavlinNative::Done() {}

bool RavlinNative::RegisterExtensionAs(unsigned short** name)
{
    if (!name)
        return false;
    *name = AllocAndConvert(memory, extensionName.c_str());
    return *name != nullptr;
}

long RavlinNative::GetNProps() { return 0; }
long RavlinNative::FindProp(const unsigned short*) { return -1; }
const unsigned short* RavlinNative::GetPropName(long, long) { return nullptr; }
bool RavlinNative::GetPropVal(long, tVariant*) { return false; }
bool RavlinNative::SetPropVal(long, tVariant*) { return false; }
bool RavlinNative::IsPropReadable(long) { return false; }
bool RavlinNative::IsPropWritable(long) { return false; }
long RavlinNative::GetNMethods() { return kMethodCount; }

long RavlinNative::FindMethod(const unsigned short* name)
{
    const std::wstring wanted = convFromShortWchar(name, getLenShortWcharStr(name));
    for (long i = 0; i < kMethodCount; ++i)
        if (wanted == methods[i].english)
            return i;
    for (long i = 0; i < kMethodCount; ++i)
        if (wanted == methods[i].russian)
            return i;
    return -1;
}

const unsigned short* RavlinNative::GetMethodName(long num, long alias)
{
    if (num < 0 || num >= kMethodCount || (alias != 0 && alias != 1))
        return nullptr;
    return AllocAndConvert(memory, alias == 0 ? methods[num].english : methods[num].russian);
}

long RavlinNative::GetNParams(long num)
{
    return num >= 0 && num < kMethodCount ? methods[num].paramCount : 0;
}

bool RavlinNative::GetParamDefValue(long, long, tVariant* value)
{
    if (value)
        value->vt = VTYPE_EMPTY;
    return false;
}

bool RavlinNative::HasRetVal(long) { return true; }
bool RavlinNative::CallAsProc(long, tVariant*, long) { return false; }

bool RavlinNative::CallAsFunc(long num, tVariant* result, tVariant* params, long count)
{
    if (num < 0 || num >= kMethodCount || !result)
        return false;
    const Method& method = methods[num];
    // Fewer parameter slots than the method fills would mean writing past the host's array.
    if (method.paramCount > 0 && (!params || count < method.paramCount))
        return false;
    try {
        return (this->*method.call)(result, params);
    } catch (...) {
        return false;
    }
}

void RavlinNative::SetLocale(const unsigned short* locale)
{
    try {
        const std::wstring code = str_tolower(convFromShortWchar(locale, getLenShortWcharStr(locale)));
        if (code.find(L"ru") != std::wstring::npos)
            isRussian = true;  // never switched back: a Russian component stays Russian
        if (code.find(L"rus") != std::wstring::npos)
            AppSettings::setLocale(0);
        else
            AppSettings::setLocale(isRussian ? 0 : 1);
    } catch (...) {
    }
}

bool RavlinNative::setString(tVariant& slot, const std::wstring& text)
{
    slot = AllocAndConvertVariant(memory, text.c_str());
    return slot.pwstrVal != nullptr;
}

bool RavlinNative::GetVersion(tVariant* result, tVariant*)
{
    return setString(*result, kVersion);
}

bool RavlinNative::GetDescription(tVariant* result, tVariant* params)
{
    setString(params[0], isRussian ? L"Zandor: Драйвер устройств ввода" : L"Zandor: Input device driver");
    setString(params[1], isRussian ? L"Драйвер для подключения устройств ввода" : L"Driver for input devices");
    setString(params[2], kEquipmentType);
    params[3] = makeIntVariant(kComponentInfo);
    params[4] = makeBoolVariant(false);
    params[5] = makeBoolVariant(true);
    setString(params[6], kMakerAddress);
    *result = makeBoolVariant(true);
    return true;
}

bool RavlinNative::GetLastError(tVariant* result, tVariant* params)
{
    if (!performer)
        return false;
    setString(params[0], performer->GetLastError(AppSettings::locale() == 0));
    *result = makeIntVariant(1);
    return true;
}

bool RavlinNative::GetParameters(tVariant* result, tVariant* params)
{
    if (!performer)
        return false;
    setString(params[0], performer->GetParameters());
    *result = makeBoolVariant(true);
    return true;
}

bool RavlinNative::SetParameter(tVariant* result, tVariant* params)
{
    if (!performer)
        return false;
    const std::wstring name = params[0].vt == VTYPE_PWSTR ? convFromShortWchar(params[0]) : std::wstring();
    *result = performer->SetParameter(name.c_str(), params[1]);
    return true;
}

bool RavlinNative::Open(tVariant* result, tVariant* params)
{
    if (!performer)
        return false;
    const std::wstring id = extensionName + L"#" + std::to_wstring(++openCounter);
    const bool opened = performer->OpenDevice(id);
    *result = makeBoolVariant(opened);
    if (opened)
        setString(params[0], id);
    return true;
}

bool RavlinNative::Close(tVariant* result, tVariant* params)
{
    if (!performer)
        return false;
    const std::wstring id = params[0].vt == VTYPE_PWSTR ? convFromShortWchar(params[0]) : std::wstring();
    *result = makeBoolVariant(performer->CloseDevice(id));
    return true;
}

bool RavlinNative::DeviceTest(tVariant* result, tVariant* params)
{
    if (!performer)
        return false;
    setString(params[0], L"");
    setString(params[1], L"");
    performer->TestDevice(L"");
    *result = makeBoolVariant(true);
    return true;
}

bool RavlinNative::GetAdditionalActions(tVariant* result, tVariant* params)
{
    setString(params[0], L"");
    *result = makeBoolVariant(true);
    return true;
}

bool RavlinNative::DoAdditionalAction(tVariant*, tVariant*)
{
    return false;
}

void RavlinNative::OnInput(const std::wstring& source, EquipmentCode equipmentCode,
                           OutputDataType outputDataType, const std::wstring& data)
{
    if (!connection)
        return;
    try {
        const std::wstring& name = eventNameFor(AppSettings::locale(), equipmentCode, outputDataType);
        ShortText sourceText(source), nameText(name), dataText(decodeForOutput(data, outputDataType));
        connection->PostExternalEvent(sourceText.units, nameText.units, dataText.units);
    } catch (...) {
        // An event that cannot be formed is dropped; the reader goes on.
    }
}
