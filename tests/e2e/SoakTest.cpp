// A long working day in one run: two serial scanners and a keyboard scanner
// scanning while their devices are opened and closed a thousand times, with
// the host asking for parameters, settings and errors in between. Every code
// scanned while its device was open must arrive once, in order, and threads,
// descriptors and memory must come back to where they started.
#include <gtest/gtest.h>

#include <map>

#include <X11/keysym.h>

#include "TestHost.h"
#include "TestUtil.h"
#include "VirtualSerialPort.h"
#include "XClient.h"
#include "XvfbServer.h"


using namespace std::chrono_literals;

namespace {

const int kCycles = std::getenv("RAVLIN_SOAK_CYCLES") ? std::atoi(std::getenv("RAVLIN_SOAK_CYCLES")) : 1000;

struct Usage {
    size_t descriptors, threads, heap;
};

Usage usage()
{
    return {openDescriptorCount(), threadCount(), liveHeapBytes()};
}

}  // namespace

TEST(Soak, ThousandOpenCloseCyclesWhileScanning)
{
    XvfbServer server;
    XClient x;
    VirtualSerialPort first("ttyUSB0");
    VirtualSerialPort second("ttyACM2");
    TestHost host;
    Component c = host.create(L"InputDevice");
    ASSERT_TRUE(c.setParameter(L"KeyboardDevice", c.str(L"Virtual core XTEST keyboard")));

    Usage start{};
    size_t sent = 0, received = 0;
    for (int cycle = 0; cycle < kCycles; ++cycle) {
        if (cycle == 1)
            start = usage();  // after the first cycle has loaded what is loaded once
        std::vector<std::wstring> ids;
        for (int port : {129, 67, 0}) {
            ASSERT_TRUE(c.setParameter(L"Port", intVar(port)));
            ids.push_back(c.open());
            ASSERT_FALSE(ids.back().empty()) << "cycle " << cycle << " port " << port;
        }
        const std::string n = std::to_string(cycle);
        // Three codes on each line and one typed, then all of them must be in.
        for (int k = 0; k < 3; ++k) {
            first.write("A" + n + "-" + std::to_string(k) + "\r");
            second.write("B" + n + "-" + std::to_string(k) + "\r");
        }
        std::vector<KeySym> keys;
        for (char digit : n)
            keys.push_back(static_cast<KeySym>(digit));
        keys.push_back(XK_Return);
        x.type(keys);
        sent += 7;
        const size_t expected = received + 7;
        ASSERT_TRUE(host.connection.waitForEvent(expected)) << "cycle " << cycle;
        const auto events = host.connection.events();
        ASSERT_EQ(events.size(), expected) << "cycle " << cycle << ": a code arrived twice or an extra one came";
        std::map<std::wstring, std::vector<std::wstring>> bySource;
        for (size_t i = received; i < events.size(); ++i)
            bySource[events[i].source].push_back(events[i].data);
        const std::wstring w(n.begin(), n.end());
        EXPECT_EQ(bySource[ids[0]], (std::vector<std::wstring>{L"A" + w + L"-0", L"A" + w + L"-1", L"A" + w + L"-2"}));
        EXPECT_EQ(bySource[ids[1]], (std::vector<std::wstring>{L"B" + w + L"-0", L"B" + w + L"-1", L"B" + w + L"-2"}));
        EXPECT_EQ(bySource[ids[2]], std::vector<std::wstring>{w});
        received = expected;

        // The host's other business in between.
        EXPECT_TRUE(c.call(L"GetParameters").returned);
        EXPECT_TRUE(c.setParameter(L"OutputDataType", intVar(0)));
        EXPECT_TRUE(c.call(L"GetLastError").returned);
        for (const auto& id : ids)
            ASSERT_TRUE(c.close(id));
        host.connection.clear();
        received = 0;
    }
    const Usage end = usage();
    RecordProperty("codes_sent", std::to_string(sent));
    std::printf("soak: %zu codes sent and received; descriptors %zu -> %zu, threads %zu -> %zu, heap %zu -> %zu bytes\n",
                sent, start.descriptors, end.descriptors, start.threads, end.threads, start.heap, end.heap);
    EXPECT_EQ(end.descriptors, start.descriptors);
    EXPECT_EQ(end.threads, start.threads);
    // The heap may differ by what caches hold, never by what a thousand cycles would leak.
    EXPECT_LT(end.heap, start.heap + 256 * 1024);
    IComponentBase* o = c.object();
    host.destroy(o);
    EXPECT_EQ(host.memory.liveBlocks(), 0u);
}
