// ravlin-host info: what the add-in says about itself.
#include <iostream>

#include "Command.h"
#include "Session.h"
#include "util/CharsetConversion.h"

Command infoCommand()
{
    return {"info", "class names, version, description and the method table",
            [](CLI::App& app) -> std::function<int()> {
                auto locale = std::make_shared<std::string>();
                addLocaleOption(app, *locale);
                return [locale] {
                    Session session(*locale);
                    Component& c = session.component;
                    std::cout << "classes:      " << wstr2str(session.host.classNames()) << "\n"
                              << "version:      " << wstr2str(c.call(L"GetVersion").result.text) << "\n";
                    const CallResult d = c.call(L"GetDescription");
                    const char* labels[] = {"name", "description", "equipment", "interface", "param 4",
                                            "param 5", "maker"};
                    for (size_t i = 0; i < d.params.size(); ++i) {
                        const Value& v = d.params[i];
                        std::cout << "  " << labels[i] << ": "
                                  << (v.type == VTYPE_PWSTR ? wstr2str(v.text)
                                      : v.type == VTYPE_BOOL ? (v.boolean ? "true" : "false")
                                                             : std::to_string(v.integer))
                                  << "\n";
                    }
                    std::cout << "methods (English / Russian, parameters):\n";
                    IComponentBase* o = c.object();
                    for (long m = 0; m < o->GetNMethods(); ++m) {
                        std::string names[2];
                        for (long alias : {0L, 1L}) {
                            const unsigned short* name = o->GetMethodName(m, alias);
                            names[alias] = wstr2str(fromShort(name));
                            void* block = const_cast<unsigned short*>(name);
                            session.host.memory.FreeMemory(&block);
                        }
                        std::cout << "  " << m << "  " << names[0] << " / " << names[1] << "  (" << o->GetNParams(m)
                                  << ")\n";
                    }
                    return 0;
                };
            }};
}
