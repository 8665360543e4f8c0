// HID POS path figures, on hidraw nodes emulated by umockdev (run under
// umockdev-wrapper): report-to-event latency against a bare read of the same
// kind of node, idle wake-ups of the reader, Close latency.
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <condition_variable>
#include <mutex>
#include <thread>

#include "BenchUtil.h"
#include "HidPosDescriptors.h"
#include "HidPosReports.h"
#include "HidrawTestbed.h"
#include "TestHost.h"
#include "input/PortFamily.h"

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;
using namespace hidpos_descriptors;

namespace {

const HidrawTestbed::Device kScanner{kHoneywellVendorId, 0x0B87, "BENCH", "Honeywell Xenon", kStandardWithByteCount};

std::string ean13Report()
{
    return reportsFor(*parseHidPosLayout(kScanner.descriptor, kScanner.vendorId), "]E0", "4006381333931")[0];
}

// The floor: a thread blocked in poll() on the node, reading one report when woken.
std::vector<double> bareReadLatencies(HidrawTestbed& bed, unsigned node, int count)
{
    const std::string report = ean13Report();
    const int fd = open(("/dev/hidraw" + std::to_string(node)).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    std::mutex lock;
    std::condition_variable woke;
    std::vector<Clock::time_point> readAt;
    std::thread reader([&] {
        std::string buffer(report.size(), '\0');
        pollfd p{fd, POLLIN, 0};
        for (int i = 0; i < count;) {
            if (poll(&p, 1, 2000) <= 0)
                break;
            if (read(fd, buffer.data(), buffer.size()) != static_cast<ssize_t>(buffer.size()))
                continue;
            const auto now = Clock::now();
            std::lock_guard<std::mutex> g(lock);
            readAt.push_back(now);
            woke.notify_one();
            ++i;
        }
    });
    std::vector<double> latencies;
    for (int i = 0; i < count; ++i) {
        std::this_thread::sleep_for(50us);
        const auto sent = Clock::now();
        bed.send(node, report);
        std::unique_lock<std::mutex> g(lock);
        if (!woke.wait_for(g, 2s, [&] { return readAt.size() > static_cast<size_t>(i); }))
            break;
        latencies.push_back(microseconds(readAt.back() - sent));
    }
    reader.join();
    close(fd);
    return latencies;
}

}  // namespace

int main()
{
    const int scans = 5000;
    HidrawTestbed bed;
    bed.plug(0, kScanner);
    bed.plug(1, {kScanner.vendorId, kScanner.productId, "FLOOR", kScanner.product, kScanner.descriptor});
    TestHost host;
    Component c = host.create(L"InputDevice");
    c.setParameter(L"Port", intVar(static_cast<int>(kHidPosFamily.base)));
    c.setParameter(L"OutputDataType", intVar(2));

    // Report latency: from writing the report to PostExternalEvent being entered.
    std::wstring id = c.open();
    const std::string ean13 = ean13Report();
    std::vector<double> scanLatency;
    for (int i = 0; i < scans; ++i) {
        std::this_thread::sleep_for(50us);
        const auto sent = Clock::now();
        bed.send(0, ean13);
        const auto event = host.connection.waitForEvent(static_cast<size_t>(i) + 1, 2s);
        if (!event) {
            std::fprintf(stderr, "scan %d never arrived\n", i);
            return 1;
        }
        scanLatency.push_back(microseconds(event->at - sent));
    }
    const std::vector<double> floor = bareReadLatencies(bed, 1, scans);
    reportLatency("report latency (report -> event)", scanLatency, floor, "bare read");

    // Idle: the reader sleeps in poll on the node, udev and its wake descriptor;
    // the baseline is the twice-a-second retry loop it would be without udev.
    const auto [readerWakeups, loopWakeups] = idleWakeups(host.connection.events().at(0).thread, 500, 5s);
    report("idle wake-ups of the reader in 5 s", static_cast<double>(readerWakeups),
           static_cast<double>(loopWakeups), "", "500 ms poll loop");
    c.close(id);

    const std::vector<double> closeLatency = closeLatencies(c, 1000);
    reportLatency("Close latency", closeLatency);
    IComponentBase* o = c.object();
    host.destroy(o);
    return readerWakeups == 0 ? 0 : 1;
}
