// Kernel keyboard path figures, in a umockdev testbed (run under
// umockdev-wrapper): key-to-event latency through the add-in beside a bare
// read of the same node, idle wake-ups of an open source, Close latency
// beside a bare open, grab and close of the node.
#include <fcntl.h>
#include <linux/input.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "BenchUtil.h"
#include "MockInput.h"
#include "TestHost.h"
#include "XvfbServer.h"

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

namespace {

constexpr int kCodes = 2000;

// The same keys written to the node and read back by a plain poll and read:
// what the kernel interface itself costs here.
std::vector<double> bareReadLatency(MockInput& devices, const MockKeyboard& scanner)
{
    const int fd = open(nodePath(scanner).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    std::vector<double> latency;
    if (fd < 0)
        return latency;
    const std::vector<int> digits = MockInput::keysOf("4601");
    for (int i = 0; i < kCodes; ++i) {
        devices.type(scanner, digits);
        const auto sent = Clock::now();
        devices.type(scanner, {KEY_ENTER});
        // Read until the Enter press arrives.
        for (bool seen = false; !seen;) {
            pollfd p = {fd, POLLIN, 0};
            poll(&p, 1, 5000);
            input_event events[64];
            const ssize_t n = read(fd, events, sizeof events);
            for (ssize_t k = 0; k < n / static_cast<ssize_t>(sizeof events[0]); ++k)
                seen = seen || (events[k].type == EV_KEY && events[k].code == KEY_ENTER && events[k].value == 1);
            if (n <= 0 && p.revents == 0)
                break;
        }
        latency.push_back(microseconds(Clock::now() - sent));
    }
    close(fd);
    return latency;
}

}  // namespace

int main()
{
    DisplayOverride noX("");
    MockInput devices;
    const MockKeyboard scanner = honeywellScanner();
    devices.plug(scanner);

    TestHost host;
    Component c = host.create(L"InputDevice");
    c.setParameter(L"Port", intVar(0));
    c.setParameter(L"KeyboardDevice", c.str(L"usb:0c2e:0b61"));
    c.setParameter(L"OutputDataType", intVar(2));
    std::wstring id = c.open();
    if (id.empty())
        return 1;
    const std::vector<int> digits = MockInput::keysOf("4601");
    std::vector<double> latency;
    for (int i = 0; i < kCodes; ++i) {
        devices.type(scanner, digits);
        const auto sent = Clock::now();
        devices.type(scanner, {KEY_ENTER});
        const auto e = host.connection.waitForEvent(static_cast<size_t>(i) + 1, 5s);
        if (!e)
            return 1;
        latency.push_back(microseconds(e->at - sent));
    }

    // Idle: the reader sleeps in poll; the baseline is a 1 ms sleep loop.
    const pid_t reader = host.connection.events().at(0).thread;
    const auto [readerWakeups, loopWakeups] = idleWakeups(reader, 1, 5s);
    c.close(id);

    // Only now a second reader: on the testbed's node two would split the stream.
    const std::vector<double> bare = bareReadLatency(devices, scanner);
    reportLatency("evdev key-to-event latency", latency, bare, "bare read");
    report("idle wake-ups of an open source in 5 s", static_cast<double>(readerWakeups),
           static_cast<double>(loopWakeups), "", "1 ms sleep loop");

    std::vector<double> closeLatency, bareClose;
    for (int i = 0; i < 200; ++i) {
        id = c.open();
        const auto start = Clock::now();
        c.close(id);
        closeLatency.push_back(microseconds(Clock::now() - start));
        const int fd = open(nodePath(scanner).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        ioctl(fd, EVIOCGRAB, 1);
        const auto bareStart = Clock::now();
        close(fd);
        bareClose.push_back(microseconds(Clock::now() - bareStart));
    }
    reportLatency("evdev Close latency", closeLatency, bareClose, "bare close");
    IComponentBase* o = c.object();
    host.destroy(o);
    return 0;
}
