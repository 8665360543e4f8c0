#include "performer/RavlinPerformerDesktop.h"

#include <cstdio>

#include "abi/StringConversion.h"
#include "input/DeviceNodes.h"
#include "util/CharsetConversion.h"
#include "util/SupportLog.h"
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

// A text parameter is a string or nothing (the empty text). Any other type is
// refused: reading its value as a pointer would take the host down.
bool readText(const tVariant& value, std::wstring& out)
{
    if (value.vt == VTYPE_EMPTY) {
        out.clear();
        return true;
    }
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

RavlinPerformerDesktop::RavlinPerformerDesktop(const InputCallback& onInput)
    : RavlinPerformerBase(onInput), settings(std::make_unique<PerformerSettings>())
{
    addSetters();
}

RavlinPerformerDesktop::~RavlinPerformerDesktop() = default;

void RavlinPerformerDesktop::addSetters()
{
    auto& s = settings->setters;
    s[L"Port"] = [this](const tVariant& v) { return readInt(v, next.port); };
    s[L"KeyboardDevice"] = [this](const tVariant& v) {
        std::wstring name;
        if (!readText(v, name))
            return false;
        next.keyboardDevice = normalisedDeviceName(wstr2str(name));
        return true;
    };
    s[L"DataBits"] = [this](const tVariant& v) { return readInt(v, next.dataBits); };
    s[L"StopBit"] = [this](const tVariant& v) { return readInt(v, next.stopBits); };
    s[L"Speed"] = [this](const tVariant& v) { return readInt(v, next.speed); };
    s[L"Prefix"] = [this](const tVariant& v) { return readCharacter(v, next.prefix); };
    s[L"Suffix"] = [this](const tVariant& v) {
        std::wstring suffix;
        if (!readCharacter(v, suffix))
            return false;
        next.suffix = wstr2str(suffix);
        return true;
    };
    s[L"Timeout"] = [this](const tVariant& v) { return readInt(v, next.keyboardTimeout); };
    s[L"TimeoutCOM"] = [this](const tVariant& v) { return readInt(v, next.comTimeout); };
    s[L"COMEncoding"] = [this](const tVariant& v) { return readText(v, next.comEncoding); };
    s[L"GSSymbolKey"] = [this](const tVariant& v) { return readInt(v, next.gsKey); };
    // Logging is off in this build; the folder is accepted and forgotten.
    s[L"LogFileFolder"] = [](const tVariant&) { return true; };
    s[L"EquipmentType"] = [this](const tVariant& v) { return setEquipmentType(v); };
    s[L"OutputDataType"] = [this](const tVariant& v) { return readInt(v, settings->outputDataType); };
    s[L"IgnoreKeyboardState"] = [this](const tVariant& v) {
        if (v.vt != VTYPE_BOOL)
            return false;
        next.ignoreKeyboardState = boolOf(v);
        return true;
    };
}

// Only the two kinds of reader change the code; any other text is accepted and
// changes nothing.
bool RavlinPerformerDesktop::setEquipmentType(const tVariant& value)
{
    if (value.vt != VTYPE_PWSTR)
        return false;
    const std::wstring type = convFromShortWchar(value);
    if (type == L"СканерШтрихкода" || type == L"УстройствоВвода")
        settings->equipmentCode = EquipmentCode::BarcodeScanner;
    else if (type == L"СчитывательМагнитныхКарт")
        settings->equipmentCode = EquipmentCode::CardReader;
    return true;
}

const InputDeviceFactory& RavlinPerformerDesktop::factoryFor(const DeviceSettings& device) const
{
    if (device.port == 0)
        return keyboardFactory;
    return comPortFactory;
}

namespace {

// The settings a source was opened with, for the support log.
std::string describe(const DeviceSettings& s)
{
    std::string suffix;
    for (unsigned char c : s.suffix) {
        char hex[4];
        std::snprintf(hex, sizeof hex, "%02X", c);
        suffix += hex;
    }
    if (s.port != 0)
        return "Port=" + std::to_string(s.port) + " Speed=" + std::to_string(s.speed) +
               " TimeoutCOM=" + std::to_string(s.comTimeout) + " Suffix=" + (suffix.empty() ? "none" : suffix) +
               " Encoding=" + wstr2str(s.comEncoding);
    return "KeyboardDevice=\"" + s.keyboardDevice + "\" GSSymbolKey=" + std::to_string(s.gsKey) +
           " Suffix=" + (suffix.empty() ? "none" : suffix) + " Timeout=" + std::to_string(s.keyboardTimeout);
}

}  // namespace

bool RavlinPerformerDesktop::OpenDevice(const std::wstring& deviceId)
{
    // A repeated id keeps the first source. A second one would only be
    // released again, and could not even open the line the first one holds.
    if (devices.count(deviceId))
        return true;
    // The source keeps its own copies: later settings never reach an open device.
    DataCallback bound = [callback = onInput, id = deviceId, equipment = settings->equipmentCode,
                          output = settings->outputDataType](const std::wstring& data) {
        callback(id, equipment, output, data);
    };
    std::unique_ptr<InputDevice> source = factoryFor(next).create(next, bound);
    SupportLog::write("Open " + wstr2str(deviceId) + (source ? "" : " failed") + ": " + describe(next));
    if (!source)
        return false;
    devices.emplace(deviceId, std::move(source));
    return true;
}

bool RavlinPerformerDesktop::CloseDevice(const std::wstring& deviceId)
{
    auto it = devices.find(deviceId);
    if (it == devices.end())
        return false;
    devices.erase(it);
    SupportLog::write("Close " + wstr2str(deviceId));
    return true;
}

bool RavlinPerformerDesktop::TestDevice(const std::wstring&)
{
    // The window listens to every port: a code there ends with the line going quiet.
    DeviceSettings ports = next;
    ports.suffix.clear();
    DeviceSettings keyboards = next;
    keyboards.testMode = true;
    DevTestDialogLinux dialog(keyboards, ports, AppSettings::locale() == 0,
                              static_cast<OutputDataType>(AppSettings::ioDataType()));
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
