#include "params/LinuxParametersTableBuilder.h"

#include <cstdio>
#include <map>

#include "params/DeviceNodes.h"
#include "util/CharsetConversion.h"
#include "util/Logger.h"
#include "util/SymbolCodecs.h"

void LinuxParametersTableBuilder::BuildPortPart()
{
    const std::wstring serial = GetCOMDevicesList("ttyS", L"COM", 0);
    const std::wstring acm = GetCOMDevicesList("ttyACM", L"Virtual COM", 64);
    const std::wstring usb = GetCOMDevicesList("ttyUSB", L"USB COM", 128);
    append(L"<Parameter" + attribute(L"Name", L"Port") + attribute(L"Caption", text(L"Порт", L"Port")) +
           attribute(L"TypeValue", L"Number") + attribute(L"DefaultValue", L"0") + L"><ChoiceList>" +
           item(L"0", text(L"Клавиатура", L"Keyboard")) + serial + acm + usb + L"</ChoiceList></Parameter>");
}

void LinuxParametersTableBuilder::BuildKeyboardDevicePart()
{
    append(L"<Parameter" + attribute(L"Name", L"KeyboardDevice") +
           attribute(L"Caption", text(L"HID устройство", L"HID device")) + attribute(L"TypeValue", L"String") +
           attribute(L"DefaultValue", L"") + attribute(L"MasterParameterName", L"Port") +
           attribute(L"MasterParameterOperation", L"Equal") + attribute(L"MasterParameterValue", L"0") +
           L"><ChoiceList>" + GetEventDeviceListEnties() + L"</ChoiceList></Parameter>");
}

void LinuxParametersTableBuilder::BuildCOMPortSpeedPart()
{
    std::wstring choices;
    for (const wchar_t* rate : {L"110", L"300", L"600", L"1200", L"2400", L"4800", L"9600", L"19200", L"38400",
                                L"57600", L"115200"})
        choices += item(rate, rate);
    append(L"<Parameter" + attribute(L"Name", L"Speed") + attribute(L"Caption", text(L"Скорость", L"Speed")) +
           attribute(L"TypeValue", L"Number") + attribute(L"DefaultValue", L"9600") +
           attribute(L"MasterParameterOperation", L"NotEqual") + attribute(L"MasterParameterName", L"Port") +
           attribute(L"MasterParameterValue", L"0") + L"><ChoiceList>" + choices + L"</ChoiceList></Parameter>");
}

// Items sorted by the node's number; names that carry no number count as 0,
// and each number is offered once.
std::wstring LinuxParametersTableBuilder::GetCOMDevicesList(std::string pattern, std::wstring caption, int offset)
{
    const std::string format = "/dev/" + pattern + "%d";
    std::map<int, std::wstring> items;
    for (const std::string& path : findDeviceNodes(pattern)) {
        int n = 0;
        if (std::sscanf(path.c_str(), format.c_str(), &n) != 1)
            n = 0;
        items.emplace(n, item(int_to_wstr(offset + n + 1), caption + int_to_wstr(n + 1)));
    }
    std::wstring list;
    for (const auto& entry : items)
        list += entry.second;
    return list;
}

std::wstring LinuxParametersTableBuilder::GetEventDeviceListEnties()
{
    return keyboardItems(listKeyboardDeviceNames());
}

// A device name is the value the KeyboardDevice setting stores; markup and
// non-ASCII bytes are blanked, exactly as the keyboard reader blanks them.
std::wstring LinuxParametersTableBuilder::keyboardItems(const std::vector<std::string>& deviceNames)
{
    std::wstring items;
    for (std::string name : deviceNames) {
        log("XDevice settings list element - " + name);
        TrimXMLIllegalChars(name);
        log("XDevice settings list element trimmed - " + name);
        const std::wstring wide = ConvertUTF8Input(name.c_str());
        items += item(wide, wide);
    }
    return items;
}
