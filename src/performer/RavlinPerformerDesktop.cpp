#include "performer/RavlinPerformerDesktop.h"

#include "addin/StringConversion.h"
#include "dialog/DevTestDialogLinux.h"
#include "performer/AppSettings.h"

namespace {

// "Prefix" and "Suffix" carry one character code; -1 means none.
bool readCharacter(const tVariant& value, std::wstring& out)
{
    int code = 0;
    if (!convVarToInt(value, code))
        return false;
    out = code == -1 ? std::wstring() : std::wstring(1, static_cast<wchar_t>(code));
    return true;
}

// A text parameter must be a string: reading another type's value as a
// pointer would take the host down.
bool readText(const tVariant& value, std::wstring& out)
{
    if (value.vt != VTYPE_PWSTR)
        return false;
    out = convFromShortWchar(value);
    return true;
}

template <class T>
bool readInt(const tVariant& value, T& out)
{
    int v = 0;
    if (!convVarToInt(value, v))
        return false;
    out = static_cast<T>(v);
    return true;
}

}  // namespace

RavlinPerformerDesktop::RavlinPerformerDesktop(IAddInDefBaseEx* connection, const InputCallback& onInput)
    : RavlinPerformerBase(connection, onInput), settings(std::make_unique<PerformerSettings>())
{
    comPortFactory.comEncoding = L"UTF-8";
    addSetters();
}

RavlinPerformerDesktop::~RavlinPerformerDesktop() = default;

void RavlinPerformerDesktop::addSetters()
{
    auto& s = settings->setters;
    s[L"Port"] = [this](const tVariant& v) {
        int port = 0;
        if (!convVarToInt(v, port))
            return false;
        comPortFactory.portNumber = static_cast<uint32_t>(port);
        keyboardFactory.portNumber = port;
        return true;
    };
    s[L"KeyboardDevice"] = [this](const tVariant& v) { return readText(v, keyboardFactory.keyboardDevice); };
    s[L"DataBits"] = [this](const tVariant& v) { return readInt(v, comPortFactory.dataBits); };
    s[L"StopBit"] = [this](const tVariant& v) { return readInt(v, comPortFactory.stopBits); };
    s[L"Speed"] = [this](const tVariant& v) { return readInt(v, comPortFactory.speed); };
    s[L"Prefix"] = [this](const tVariant& v) { return readCharacter(v, keyboardFactory.prefix); };
    s[L"Suffix"] = [this](const tVariant& v) {
        if (!readCharacter(v, keyboardFactory.suffix))
            return false;
        comPortFactory.suffix = keyboardFactory.suffix;
        return true;
    };
    s[L"Timeout"] = [this](const tVariant& v) { return readInt(v, keyboardFactory.keyboardTimeout); };
    s[L"TimeoutCOM"] = [this](const tVariant& v) { return readInt(v, comPortFactory.comTimeout); };
    s[L"COMEncoding"] = [this](const tVariant& v) { return readText(v, comPortFactory.comEncoding); };
    s[L"GSSymbolKey"] = [this](const tVariant& v) { return readInt(v, keyboardFactory.gsKey); };
    // Logging is off in this build; the folder is accepted and forgotten.
    s[L"LogFileFolder"] = [](const tVariant&) { return true; };
    s[L"EquipmentType"] = [this](const tVariant& v) { return setEquipmentType(v); };
    s[L"OutputDataType"] = [this](const tVariant& v) { return readInt(v, settings->outputDataType); };
    s[L"IgnoreKeyboardState"] = [this](const tVariant& v) {
        if (v.vt != VTYPE_BOOL)
            return false;
        keyboardFactory.ignoreKeyboardState = boolOf(v);
        return true;
    };
}

bool RavlinPerformerDesktop::setEquipmentType(const tVariant& value)
{
    if (!readText(value, equipmentType))
        return false;
    const bool english = AppSettings::locale() != 0;
    if (equipmentType == L"СканерШтрихкода" || equipmentType == L"УстройствоВвода") {
        dataEventName = english ? L"Barcode" : L"Штрихкод";
        settings->equipmentCode = 16;
    } else if (equipmentType == L"СчитывательМагнитныхКарт") {
        dataEventName = english ? L"TrackData" : L"ДанныеКарты";
        settings->equipmentCode = 32;
    }
    return true;
}

bool RavlinPerformerDesktop::OpenDevice(const std::wstring& deviceId)
{
    const InputDeviceFactory& factory =
        comPortFactory.portNumber != 0 ? static_cast<const InputDeviceFactory&>(comPortFactory)
                                       : keyboardFactory;
    // The source keeps its own copies: later settings never reach an open device.
    DataCallback bound = [callback = onInput, id = deviceId,
                          equipment = static_cast<int>(settings->equipmentCode),
                          output = static_cast<int>(settings->outputDataType)](const std::wstring& data) {
        callback(id, equipment, output, data);
    };
    std::shared_ptr<InputDevice> source = factory.create(bound);
    if (!source)
        return false;
    // A repeated id keeps the first source; the new one is released here.
    devices.emplace(deviceId, std::move(source));
    return true;
}

bool RavlinPerformerDesktop::CloseDevice(const std::wstring& deviceId)
{
    auto it = devices.find(deviceId);
    if (it == devices.end())
        return false;
    devices.erase(it);
    return true;
}

bool RavlinPerformerDesktop::TestDevice(const std::wstring&)
{
    // The window listens to every port: a code there ends with the line going quiet.
    InputDeviceComPortFactory ports = comPortFactory;
    ports.suffix.clear();
    InputDeviceKeyboardFactory keyboards = keyboardFactory;
    keyboards.testMode = true;
    DevTestDialogLinux dialog(keyboards, ports, AppSettings::locale() == 0,
                              static_cast<int>(AppSettings::ioDataType()));
    dialog.ShowDlg();
    return true;
}

std::wstring RavlinPerformerDesktop::GetLastError(bool russian)
{
    return russian ? L"Ошибка подключения. Проверьте доступность устройства."
                   : L"Connection error. Check device availability.";
}

tVariant RavlinPerformerDesktop::SetParameter(const wchar_t* name, const tVariant& value)
{
    auto it = settings->setters.find(name ? std::wstring(name) : std::wstring());
    if (it == settings->setters.end())
        return makeBoolVariant(false);
    // A rejected value is still reported as success; it is simply not applied.
    it->second(value);
    return makeBoolVariant(true);
}

tVariant RavlinPerformerDesktop::GetParameter(const wchar_t*)
{
    return tVariant{};
}
