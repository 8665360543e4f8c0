// Serial path figures: scan-to-event latency against a bare blocking read on a
// pseudo-terminal, Close latency, and delivery of 100,000 codes under load.
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <condition_variable>
#include <mutex>
#include <thread>

#include "BenchUtil.h"
#include "PrivateDev.h"
#include "TestHost.h"
#include "VirtualSerialPort.h"

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

namespace {

// The floor: a thread blocked in read() on a raw pty slave, woken by one byte.
std::vector<double> bareReadLatencies(int count)
{
    VirtualSerialPort line("ttyS9");
    const int fd = open(line.slavePath().c_str(), O_RDONLY | O_NOCTTY);
    termios t{};
    tcgetattr(fd, &t);
    cfmakeraw(&t);
    t.c_cc[VMIN] = 1;
    t.c_cc[VTIME] = 0;
    tcsetattr(fd, TCSANOW, &t);
    std::mutex lock;
    std::condition_variable woke;
    std::vector<Clock::time_point> readAt;
    std::thread reader([&] {
        char c;
        for (int i = 0; i < count; ++i) {
            if (read(fd, &c, 1) != 1)
                break;
            const auto now = Clock::now();
            std::lock_guard<std::mutex> g(lock);
            readAt.push_back(now);
            woke.notify_one();
        }
    });
    std::vector<double> latencies;
    for (int i = 0; i < count; ++i) {
        std::this_thread::sleep_for(50us);
        const auto sent = Clock::now();
        line.write("\r");
        std::unique_lock<std::mutex> g(lock);
        woke.wait(g, [&] { return readAt.size() > static_cast<size_t>(i); });
        latencies.push_back(microseconds(readAt.back() - sent));
    }
    reader.join();
    close(fd);
    return latencies;
}

}  // namespace

int main(int argc, char** argv)
{
    enterPrivateDev(argc, argv);
    const int scans = 10000;
    TestHost host;
    VirtualSerialPort line("ttyUSB0");
    Component c = host.create(L"InputDevice");
    c.setParameter(L"Port", intVar(129));
    c.setParameter(L"OutputDataType", intVar(2));

    // Scan latency: from writing the suffix byte to PostExternalEvent being entered.
    std::wstring id = c.open();
    std::vector<double> scanLatency;
    for (int i = 0; i < scans; ++i) {
        std::this_thread::sleep_for(50us);
        const auto sent = Clock::now();
        line.write("4601234567890\r");
        const auto event = host.connection.waitForEvent(static_cast<size_t>(i) + 1, 2s);
        if (!event) {
            std::fprintf(stderr, "scan %d never arrived\n", i);
            return 1;
        }
        scanLatency.push_back(microseconds(event->at - sent));
    }
    c.close(id);
    const std::vector<double> floor = bareReadLatencies(scans);
    reportLatency("scan latency (suffix -> event)", scanLatency, floor, "bare read");

    // Close latency over open/close cycles; a one-second polling loop shows as ~500 ms.
    const std::vector<double> closeLatency = closeLatencies(c, 1000);
    reportLatency("Close latency", closeLatency);

    // Delivery under load: 100 bursts of 1,000 codes, no pauses.
    host.connection.clear();
    c.setParameter(L"OutputDataType", intVar(0));
    id = c.open();
    int sent = 0;
    for (int burst = 0; burst < 100; ++burst) {
        std::string bytes;
        for (int i = 0; i < 1000; ++i)
            bytes += std::to_string(sent++) + "\r";
        line.write(bytes);
    }
    const auto events = host.connection.waitForEvents(static_cast<size_t>(sent), 60s);
    int inOrder = 0;
    for (size_t i = 0; i < events.size(); ++i)
        if (events[i].data == std::to_wstring(i))
            ++inOrder;
    report("codes delivered once and in order (of 100000)", inOrder, 0, "");
    report("events received in all", static_cast<double>(events.size()), 0, "");
    IComponentBase* o = c.object();
    host.destroy(o);
    return inOrder == sent && events.size() == static_cast<size_t>(sent) ? 0 : 1;
}
