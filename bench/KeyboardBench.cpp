// Keyboard path figures: key-to-event latency, idle wake-ups of the reader
// against a 1 ms sleep loop, and Close latency.
#include <X11/keysym.h>
#include <unistd.h>

#include <thread>

#include "BenchUtil.h"
#include "PrivateDev.h"
#include "TestHost.h"
#include "XClient.h"
#include "XvfbServer.h"

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

int main(int argc, char** argv)
{
    enterPrivateDev(argc, argv);
    XvfbServer server;
    XClient x;
    TestHost host;
    Component c = host.create(L"InputDevice");
    c.setParameter(L"Port", intVar(0));
    c.setParameter(L"KeyboardDevice", c.str(L"Virtual core XTEST keyboard"));
    c.setParameter(L"OutputDataType", intVar(2));
    std::wstring id = c.open();
    if (id.empty())
        return 1;

    const int codes = 2000;
    std::vector<double> latency;
    for (int i = 0; i < codes; ++i) {
        x.type({XK_4, XK_6, XK_0, XK_1});
        const auto sent = Clock::now();
        x.type({XK_Return});
        const auto e = host.connection.waitForEvent(static_cast<size_t>(i) + 1, 5s);
        if (!e)
            return 1;
        latency.push_back(microseconds(e->at - sent));
    }
    reportLatency("key-to-event latency", latency);

    // Idle: the reader sleeps in poll; the baseline is a 1 ms sleep loop.
    const auto [readerWakeups, loopWakeups] = idleWakeups(host.connection.events().at(0).thread, 1, 5s);
    report("idle wake-ups of the reader in 5 s", static_cast<double>(readerWakeups),
           static_cast<double>(loopWakeups), "", "1 ms sleep loop");
    c.close(id);

    const std::vector<double> closeLatency = closeLatencies(c, 200);
    reportLatency("keyboard Close latency", closeLatency);
    IComponentBase* o = c.object();
    host.destroy(o);
    return 0;
}
