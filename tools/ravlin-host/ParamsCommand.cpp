// ravlin-host params: the settings-form document the driver answers.
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <iostream>

#include "Command.h"
#include "Session.h"

namespace {

std::string pretty(const std::string& document)
{
    xmlDocPtr doc = xmlReadMemory(document.data(), static_cast<int>(document.size()), "parameters.xml", "UTF-8",
                                  XML_PARSE_NONET | XML_PARSE_NOBLANKS);
    if (!doc)
        throw std::runtime_error("the driver's document does not parse as XML");
    xmlChar* text = nullptr;
    int size = 0;
    xmlDocDumpFormatMemoryEnc(doc, &text, &size, "UTF-8", 1);
    std::string out(reinterpret_cast<char*>(text), static_cast<size_t>(size));
    xmlFree(text);
    xmlFreeDoc(doc);
    return out;
}

}  // namespace

Command paramsCommand()
{
    return {"params", "the parameters document (--pretty to indent it)",
            [](CLI::App& app) -> std::function<int()> {
                auto locale = std::make_shared<std::string>();
                auto indent = std::make_shared<bool>(false);
                addLocaleOption(app, *locale);
                app.add_flag("--pretty", *indent, "indent the document");
                return [locale, indent] {
                    Session session(*locale);
                    const std::string document = session.parameters();
                    std::cout << (*indent ? pretty(document) : document + "\n");
                    return 0;
                };
            }};
}
