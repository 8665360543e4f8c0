// ravlin-host listen: set parameters, open a device and print its events.
#include <signal.h>

#include <atomic>
#include <chrono>
#include <iostream>

#include "Command.h"
#include "Session.h"
#include "SymbologyTap.h"
#include "util/CharsetConversion.h"

namespace {

std::atomic<bool> interrupted{false};

void onSignal(int) { interrupted = true; }

struct ListenOptions {
    std::vector<std::string> settings;
    std::string className = "InputDevice";
    std::string locale;
    bool json = false;
    size_t count = 0;
    double timeout = 0;
};

int listen(const ListenOptions& o)
{
    Session session(o.locale, str2wstr(o.className));
    Component& c = session.component;
    // Every value is checked before anything is opened.
    std::vector<std::pair<std::wstring, tVariant>> values;
    for (const std::string& assignment : o.settings) {
        std::wstring name;
        const tVariant value = parseParameter(c, assignment, name);
        values.emplace_back(name, value);
    }
    for (const auto& [name, value] : values)
        c.setParameter(name, value);

    // Opened before the device, so that it sees every scan the driver sees.
    std::optional<uint32_t> port;
    for (const auto& [name, value] : values)
        if (name == L"Port" && value.vt == VTYPE_I4)
            port = static_cast<uint32_t>(value.lVal);
    SymbologyTap symbologies;
    const bool tapped = o.json && port && symbologies.start(*port);

    const std::wstring id = c.open();
    if (id.empty()) {
        std::cerr << "ravlin-host: Open failed: " << wstr2str(c.call(L"GetLastError").params[0].text) << "\n";
        return 1;
    }
    std::cerr << "listening on " << wstr2str(id) << " (Ctrl+C to stop)\n";
    signal(SIGINT, onSignal);
    signal(SIGTERM, onSignal);
    const auto deadline = std::chrono::steady_clock::now() +
                          std::chrono::milliseconds(static_cast<long>(o.timeout * 1000));
    // Events wait in the host's queue; they are printed here, never on the driver's thread.
    size_t shown = 0;
    while (!interrupted && (o.count == 0 || shown < o.count) &&
           (o.timeout <= 0 || std::chrono::steady_clock::now() < deadline)) {
        const auto e = session.host.connection.waitForEvent(shown + 1, std::chrono::milliseconds(100));
        if (!e)
            continue;
        std::cout << formatEvent(*e, o.json, tapped ? symbologies.next() : std::nullopt) << std::endl;
        ++shown;
    }
    c.close(id);
    return 0;
}

}  // namespace

Command listenCommand()
{
    return {"listen", "open a device with the given parameters and print its events",
            [](CLI::App& app) -> std::function<int()> {
                auto o = std::make_shared<ListenOptions>();
                app.add_option("--set", o->settings, "a parameter, NAME=VALUE (repeatable)");
                app.add_option("--class", o->className, "component class")
                    ->check(CLI::IsMember({"InputDevice", "CardReaderDevice"}));
                addLocaleOption(app, o->locale);
                app.add_flag("--json", o->json, "one JSON object a line");
                app.add_option("--count", o->count, "stop after this many events");
                app.add_option("--timeout", o->timeout, "stop after this many seconds");
                return [o] { return listen(*o); };
            }};
}
