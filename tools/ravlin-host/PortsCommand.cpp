// ravlin-host ports: the serial ports, HID POS scanners and keyboard devices
// the driver offers, and the HID devices it cannot read with the reason.
#include <fcntl.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include "Command.h"
#include "Processes.h"
#include "Session.h"
#include "input/DeviceNodes.h"
#include "input/EvdevKeyboards.h"
#include "input/HidrawNode.h"
#include "input/PortFamily.h"

namespace {

// A serial line other programs have open is named with them: the driver
// reads a line only when no other reader holds it.
std::string noteOn(const std::string& parameter, const char* value)
{
    const uint32_t port = static_cast<uint32_t>(std::strtoul(value, nullptr, 10));
    const PortFamily* family = portFamilyOf(port);
    if (parameter != "Port" || !family || family->hidPos)
        return std::string();
    const std::string holders = holdersOf(portDevicePath(port));
    return holders.empty() ? std::string() : "\topen in " + holders;
}

void printChoices(xmlNodePtr node, const std::string& parameter, const char* heading)
{
    for (; node; node = node->next) {
        if (node->type != XML_ELEMENT_NODE)
            continue;
        xmlChar* name = xmlGetProp(node, BAD_CAST "Name");
        const bool wanted = name && parameter == reinterpret_cast<char*>(name);
        xmlFree(name);
        if (wanted) {
            std::cout << heading << ":\n";
            for (xmlNodePtr list = node->children; list; list = list->next)
                for (xmlNodePtr item = list->children; item; item = item->next) {
                    xmlChar* value = xmlGetProp(item, BAD_CAST "Value");
                    xmlChar* text = xmlNodeGetContent(item);
                    std::cout << "  " << reinterpret_cast<char*>(value) << "\t" << reinterpret_cast<char*>(text)
                              << noteOn(parameter, reinterpret_cast<char*>(value)) << "\n";
                    xmlFree(value);
                    xmlFree(text);
                }
            return;
        }
        printChoices(node->children, parameter, heading);
    }
}

// Why Open would fail on a hidraw node, or empty when it would not.
std::string hidrawProblem(const HidrawNode& node)
{
    if (!node.layout)
        return "not a scanner in HID POS mode (its report descriptor declares none)";
    const int fd = open(node.devicePath().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        const std::string why = std::strerror(errno);
        return "cannot be opened: " + why +
               (errno == EACCES ? " (udev/70-ravlin-scanners.rules gives the user at the seat access)" : "");
    }
    close(fd);
    return "";
}

void printHidrawNodes()
{
    std::cout << "HID devices (hidraw):\n";
    for (const HidrawNode& node : HidrawNode::list()) {
        const std::string problem = hidrawProblem(node);
        std::cout << "  " << node.portNumber() << "\t" << node.devicePath() << "\t"
                  << normalisedDeviceName(node.product) << "\t" << (problem.empty() ? "HID POS scanner" : problem)
                  << "\n";
    }
}

// The kernel's keyboards, which the driver reads where X does not show them,
// and whether this user could open one now.
void printKernelKeyboards()
{
    std::cout << "kernel keyboards (node, KeyboardDevice, ids, can open):\n";
    for (const EvdevKeyboard& keyboard : listEvdevKeyboards()) {
        const std::string why = whyNotOpenable(keyboard);
        std::cout << "  " << keyboard.node << "\t" << keyboard.name << "\t"
                  << (keyboard.ids.empty() ? "-" : keyboard.ids) << "\t" << (why.empty() ? "yes" : "no: " + why)
                  << "\n";
    }
}

}  // namespace

Command portsCommand()
{
    return {"ports", "serial ports and HID POS scanners (Port values) and keyboard devices the machine offers",
            [](CLI::App& app) -> std::function<int()> {
                auto locale = std::make_shared<std::string>();
                addLocaleOption(app, *locale);
                return [locale] {
                    Session session(*locale);
                    const std::string document = session.parameters();
                    xmlDocPtr doc = xmlReadMemory(document.data(), static_cast<int>(document.size()), nullptr,
                                                  "UTF-8", XML_PARSE_NONET);
                    if (!doc)
                        throw std::runtime_error("the driver's document does not parse as XML");
                    printChoices(xmlDocGetRootElement(doc), "Port", "ports (value, name)");
                    printChoices(xmlDocGetRootElement(doc), "KeyboardDevice", "keyboard devices (KeyboardDevice)");
                    xmlFreeDoc(doc);
                    printKernelKeyboards();
                    printHidrawNodes();
                    return 0;
                };
            }};
}
