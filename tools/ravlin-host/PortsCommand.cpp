// ravlin-host ports: the serial ports and keyboard devices the driver offers.
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <iostream>

#include "Command.h"
#include "Session.h"
#include "input/EvdevKeyboards.h"

namespace {

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
                    std::cout << "  " << reinterpret_cast<char*>(value) << "\t" << reinterpret_cast<char*>(text) << "\n";
                    xmlFree(value);
                    xmlFree(text);
                }
            return;
        }
        printChoices(node->children, parameter, heading);
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
    return {"ports", "serial ports (Port values) and keyboard devices the machine offers",
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
                    printChoices(xmlDocGetRootElement(doc), "Port", "serial ports (value, name)");
                    printChoices(xmlDocGetRootElement(doc), "KeyboardDevice", "keyboard devices (KeyboardDevice)");
                    xmlFreeDoc(doc);
                    printKernelKeyboards();
                    return 0;
                };
            }};
}
