// ravlin-host demo: a virtual scanner in a private /dev plays three codes into
// the driver, opened exactly as `listen --set Port=129`.
#include <algorithm>
#include <chrono>
#include <iostream>

#include "Command.h"
#include "PrivateDev.h"
#include "Session.h"
#include "util/CharsetConversion.h"
#include "VirtualSerialPort.h"

namespace {

struct Scan {
    const char* kind;
    std::string bytes;
};

const Scan kScans[] = {
    {"EAN-13", "4006381333931"},
    {"Code 128", "RAVLIN-2026-0001"},
    {"GS1 DataMatrix marking code", "0104601234567893215Ab3cDe\x1D" "91EE06\x1D" "92dGVzdGtleQ=="},
};

int demo(char* self, std::string locale)
{
    // Started again inside its own /dev, with the same language.
    char* args[] = {self, const_cast<char*>("demo"), const_cast<char*>("--locale"), locale.data(), nullptr};
    enterPrivateDev(4, args);
    VirtualSerialPort text("ttyUSB0");
    VirtualSerialPort base64("ttyUSB1");
    Session session(locale);
    Component& c = session.component;
    c.setParameter(L"Port", intVar(129));
    c.setParameter(L"OutputDataType", intVar(1));  // human-readable
    const std::wstring first = c.open();
    c.setParameter(L"Port", intVar(130));
    c.setParameter(L"OutputDataType", intVar(2));  // Base64
    const std::wstring second = c.open();
    if (first.empty() || second.empty()) {
        std::cerr << "ravlin-host: Open failed: " << wstr2str(c.call(L"GetLastError").params[0].text) << "\n";
        return 1;
    }
    std::cout << "virtual scanner on /dev/ttyUSB0 (" << wstr2str(first) << ", human-readable) and /dev/ttyUSB1 ("
              << wstr2str(second) << ", Base64)\n";
    std::vector<double> latencies;
    size_t received = 0, sent = 0;
    for (const Scan& scan : kScans) {
        std::cout << "scan: " << scan.kind << "\n";
        for (VirtualSerialPort* line : {&text, &base64}) {
            // A code and its suffix in one write, as a scanner sends them in
            // one burst: written piece by piece, a busy machine could sleep
            // longer than TimeoutCOM between pieces and cut the code in two.
            const auto written = std::chrono::steady_clock::now();
            line->write(scan.bytes + "\r");
            ++sent;
            const auto e = session.host.connection.waitForEvent(received + 1, std::chrono::seconds(5));
            if (!e)
                continue;
            ++received;
            latencies.push_back(std::chrono::duration<double, std::micro>(e->at - written).count());
            std::cout << "  " << formatEvent(*e, false) << "\n";
        }
    }
    c.close(first);
    c.close(second);
    std::sort(latencies.begin(), latencies.end());
    const double median = latencies.empty() ? 0 : latencies[latencies.size() / 2];
    std::cout << "codes sent " << sent << ", events received " << received << ", median latency "
              << static_cast<long>(median) << " us\n";
    return received == sent ? 0 : 1;
}

}  // namespace

Command demoCommand()
{
    return {"demo", "play realistic scans from a virtual scanner through the driver",
            [](CLI::App& app) -> std::function<int()> {
                auto locale = std::make_shared<std::string>("ru");
                addLocaleOption(app, *locale);
                return [locale] {
                    static char self[] = "ravlin-host";
                    return demo(self, *locale);
                };
            }};
}
