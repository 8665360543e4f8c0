// ravlin-host test: the driver's device test window.
#include <iostream>

#include "Command.h"
#include "Session.h"

Command testCommand()
{
    return {"test", "open the device test window (DeviceTest)", [](CLI::App& app) -> std::function<int()> {
                auto locale = std::make_shared<std::string>();
                addLocaleOption(app, *locale);
                return [locale] {
                    Session session(*locale);
                    const CallResult r = session.component.call(L"DeviceTest");
                    std::cout << "DeviceTest returned " << (r.returned && r.result.boolean ? "true" : "false") << "\n";
                    return r.returned ? 0 : 1;
                };
            }};
}
