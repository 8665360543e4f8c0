#include "params/LinuxParametersTableBuilder.h"

#include <map>

#include "input/DeviceNodes.h"
#include "input/HidrawNode.h"
#include "input/LineSpeeds.h"
#include "input/PortFamily.h"
#include "util/TextUtil.h"
#include "util/CharsetConversion.h"
#include "util/Logger.h"
#include "util/SymbolCodecs.h"

void LinuxParametersTableBuilder::BuildPortPart()
{
    std::wstring ports;
    for (const PortFamily& family : kPortFamilies)
        ports += family.hidPos ? GetHidPosDevicesList() : GetCOMDevicesList(family);
    append(L"<Parameter" + attribute(L"Name", L"Port") + attribute(L"Caption", text(L"Порт", L"Port")) +
           attribute(L"TypeValue", L"Number") + attribute(L"DefaultValue", L"0") + L"><ChoiceList>" +
           item(L"0", text(L"Клавиатура", L"Keyboard")) + ports + L"</ChoiceList></Parameter>");
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
    for (const LineSpeed& speed : kLineSpeeds)
        choices += item(int_to_wstr(static_cast<int>(speed.baud)), int_to_wstr(static_cast<int>(speed.baud)));
    append(L"<Parameter" + attribute(L"Name", L"Speed") + attribute(L"Caption", text(L"Скорость", L"Speed")) +
           attribute(L"TypeValue", L"Number") + attribute(L"DefaultValue", L"9600") +
           attribute(L"MasterParameterOperation", L"NotEqual") + attribute(L"MasterParameterName", L"Port") +
           attribute(L"MasterParameterValue", L"0") + L"><ChoiceList>" + choices + L"</ChoiceList></Parameter>");
}

// Items sorted by port number, each number offered once. A node of the
// family's name that carries no number (found deeper in /dev, say) has always
// been offered as the family's first port.
std::wstring LinuxParametersTableBuilder::GetCOMDevicesList(const PortFamily& family)
{
    std::map<uint32_t, std::wstring> items;
    for (const std::string& path : findDeviceNodes(family.node)) {
        const uint32_t port = portNumberOfNode(family, path).value_or(family.base);
        const int index = static_cast<int>(port - family.base);
        items.emplace(port, item(int_to_wstr(static_cast<int>(port)), family.caption + int_to_wstr(index + 1)));
    }
    std::wstring list;
    for (const auto& entry : items)
        list += entry.second;
    return list;
}

// Named by node and product, e.g. "hidraw0: Honeywell Xenon 1950g"; the
// product name is blanked of markup like a keyboard device name.
std::wstring LinuxParametersTableBuilder::GetHidPosDevicesList()
{
    std::wstring list;
    for (const HidrawNode& node : HidrawNode::list())
        if (node.layout)
            list += item(int_to_wstr(static_cast<int>(node.portNumber())),
                         L"hidraw" + int_to_wstr(static_cast<int>(node.number)) + L": " +
                             ConvertUTF8Input(normalisedDeviceName(node.product).c_str()));
    return list;
}

std::wstring LinuxParametersTableBuilder::GetEventDeviceListEnties()
{
    return keyboardItems(listKeyboardChoices());
}

// A device name is the value the KeyboardDevice setting stores; markup, control
// and non-ASCII bytes are blanked, exactly as the keyboard reader blanks them.
std::wstring LinuxParametersTableBuilder::keyboardItems(const std::vector<std::string>& deviceNames)
{
    std::wstring items;
    for (const std::string& listed : deviceNames) {
        log("XDevice settings list element - " + listed);
        const std::string name = normalisedDeviceName(listed);
        log("XDevice settings list element trimmed - " + name);
        const std::wstring wide = ConvertUTF8Input(name.c_str());
        items += item(wide, wide);
    }
    return items;
}
