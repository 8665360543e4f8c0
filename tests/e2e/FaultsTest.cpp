// Faults the host must survive: floods, giant codes, closing under load,
// vanished servers and devices it may not read.
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <thread>

#include "ChildProcess.h"
#include "OrdinaryUser.h"
#include "PrivateDev.h"
#include "ComponentFixture.h"
#include "TestHost.h"
#include "TestUtil.h"
#include "VirtualSerialPort.h"
#include "XClient.h"
#include "XvfbServer.h"

using namespace std::chrono_literals;

namespace {

long residentMegabytes()
{
    std::ifstream statm("/proc/self/statm");
    long size = 0, resident = 0;
    statm >> size >> resident;
    return resident * sysconf(_SC_PAGESIZE) / (1024 * 1024);
}

using Faults = ComponentFixture;

// Writes codes on a line as fast as it takes them until stopped.
class Streamer {
public:
    // Whole codes only, and never stuck on a line nobody reads.
    Streamer(VirtualSerialPort& line, std::string code) : thread([this, &line, code] {
        while (!stop) {
            size_t done = line.writeSome(code, 100);
            while (!stop && done > 0 && done < code.size())
                done += line.writeSome(code.substr(done), 100);
        }
    }) {}
    ~Streamer()
    {
        stop = true;
        thread.join();
    }

private:
    std::atomic<bool> stop{false};
    std::thread thread;
};

}  // namespace

TEST_F(Faults, CloseAndDestroyWhileEventsAreDelivered)
{
    VirtualSerialPort line("ttyUSB0");
    const size_t fds = openDescriptorCount();
    const size_t threads = threadCount();
    Streamer streamer(line, "4006381333931\r");
    for (int round = 0; round < 50; ++round) {
        Component c = makeOnPort(129);
        const std::wstring id = c.open();
        ASSERT_FALSE(id.empty());
        host.connection.waitForEvent(host.connection.events().size() + 1);
        if (round % 2) {
            EXPECT_TRUE(c.close(id));
        }
        IComponentBase* o = c.object();
        EXPECT_EQ(host.destroy(o), 0);  // with the device still open on even rounds
        created.back() = nullptr;
    }
    // Opening in the middle of a code can only cut off its head.
    const std::wstring code = L"4006381333931";
    for (const HostEvent& e : host.connection.events())
        EXPECT_TRUE(!e.data.empty() && code.compare(code.size() - e.data.size(), e.data.size(), e.data) == 0)
            << std::string(e.data.begin(), e.data.end());
    EXPECT_EQ(openDescriptorCount(), fds + 0);
    EXPECT_EQ(threadCount(), threads + 1);  // only the streamer
}

TEST_F(Faults, MegabyteCodeWithoutSuffix)
{
    VirtualSerialPort line("ttyUSB0");
    Component c = makeOnPort(129);
    ASSERT_TRUE(c.setParameter(L"Suffix", intVar(-1)));
    // The code ends on the line's pause: the longest there is, so that a
    // writer stalled by a busy machine does not end it early.
    ASSERT_TRUE(c.setParameter(L"TimeoutCOM", intVar(1000)));
    ASSERT_FALSE(c.open().empty());
    const std::string code(1000000, '7');
    line.write(code);
    const auto e = host.connection.waitForEvent(1);
    ASSERT_TRUE(e);
    EXPECT_EQ(e->data.size(), code.size());
    EXPECT_EQ(e->data.find_first_not_of(L'7'), std::wstring::npos);
    line.write("12");
    EXPECT_THAT(host.connection.waitForEvent(2), EventData(L"12"));
}

TEST_F(Faults, MegabyteWithoutTheSuffixIsDroppedAndFramingRecovers)
{
    VirtualSerialPort line("ttyUSB0");
    Component c = makeOnPort(129);
    // A loaded machine can stall the writer for more than the default 5 ms,
    // which would rightly end the code there: give the line the longest pause.
    ASSERT_TRUE(c.setParameter(L"TimeoutCOM", intVar(1000)));
    ASSERT_FALSE(c.open().empty());
    line.write(std::string(2 * 1024 * 1024, '7'));
    line.write("\r12\r");
    EXPECT_THAT(host.connection.waitForEvent(1), EventData(L"12"));
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(host.connection.events().size(), 1u);
}

TEST_F(Faults, FloodForTenSecondsStaysBoundedAndClosesPromptly)
{
    VirtualSerialPort line("ttyUSB0");
    Component c = makeOnPort(129);
    const std::wstring id = c.open();
    ASSERT_FALSE(id.empty());
    const long before = residentMegabytes();
    long peak = before;
    {
        Streamer flood(line, std::string(65536, 'x'));
        for (int i = 0; i < 100; ++i) {
            std::this_thread::sleep_for(100ms);
            peak = std::max(peak, residentMegabytes());
        }
    }
    // Far below what ten seconds of a flooding line would pile up unbounded.
    EXPECT_LT(peak - before, 400) << "resident memory grew from " << before << " MB to " << peak << " MB";
    // The flood's tail may still be in the line and end, with the first CR,
    // as a code of its own; the code after it must come whole.
    line.write("\rok\r");
    ASSERT_TRUE(waitUntil([&] {
        const auto events = host.connection.events();
        return !events.empty() && events.back().data == L"ok";
    }));
    for (const HostEvent& e : host.connection.events())
        EXPECT_TRUE(e.data == L"ok" || e.data.find_first_not_of(L'x') == std::wstring::npos);
    EXPECT_TRUE(c.close(id));
}

TEST_F(Faults, OpenOfThingsThatAreNoSerialLine)
{
    Component c = makeOnPort(129 + 20);
    EXPECT_EQ(c.open(), L"");  // no node
    linkDevice("ttyUSB21", "/dev/null");
    linkDevice("ttyUSB22", "/dev/pts");
    ASSERT_TRUE(c.setParameter(L"Port", intVar(129 + 21)));
    EXPECT_EQ(c.open(), L"");
    ASSERT_TRUE(c.setParameter(L"Port", intVar(129 + 22)));
    EXPECT_EQ(c.open(), L"");
    unlinkDevice("ttyUSB21");
    unlinkDevice("ttyUSB22");
}

TEST_F(Faults, OpenOfANodeWithoutReadPermission)
{
    // Root may open anything, so the attempt is made as an ordinary user.
    VirtualSerialPort line("ttyUSB4");
    ChildProcess tool(ravlinHostAsOrdinaryUser(RAVLIN_HOST_TOOL, {"listen", "--set", "Port=133"}), {}, true);
    std::string out;
    for (std::string l; !(l = tool.readLine()).empty();)
        out += l + "\n";
    EXPECT_EQ(tool.wait(), 1) << out;
    EXPECT_NE(out.find("Open failed"), std::string::npos) << out;
}

TEST_F(Faults, XServerGoingAwayUnderAnOpenKeyboardSource)
{
    auto server = std::make_unique<XvfbServer>();
    Component c = makeOnPort(0);
    ASSERT_TRUE(c.setParameter(L"KeyboardDevice", c.str(L"Virtual core XTEST keyboard")));
    const std::wstring id = c.open();
    ASSERT_FALSE(id.empty());
    {
        XClient x;
        x.typeText("1\n");
        EXPECT_THAT(host.connection.waitForEvent(1), EventData(L"1"));
    }
    server->kill();
    std::this_thread::sleep_for(300ms);
    EXPECT_TRUE(c.close(id));
    const std::wstring second = c.open();  // no server now: a clean failure
    EXPECT_EQ(second, L"");
    server.reset();
}
