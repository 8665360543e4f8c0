// GetParameters through the host against listing the same three patterns the
// way a shell would, with find through popen.
#include <cstdio>

#include "BenchUtil.h"
#include "TestHost.h"
#include "XvfbServer.h"

using Clock = std::chrono::steady_clock;

int main()
{
    const int rounds = 50;
    XvfbServer server;  // the keyboard list is part of the document
    TestHost host;
    Component c = host.create(L"InputDevice");
    std::vector<double> driver;
    for (int i = 0; i < rounds; ++i) {
        const auto start = Clock::now();
        const CallResult r = c.call(L"GetParameters");
        driver.push_back(microseconds(Clock::now() - start));
        if (!r.returned)
            return 1;
    }
    std::vector<double> shell;
    for (int i = 0; i < rounds; ++i) {
        const auto start = Clock::now();
        for (const char* pattern : {"ttyS", "ttyACM", "ttyUSB"}) {
            FILE* p = popen((std::string("find /dev/ -name \"") + pattern + "*\" 2>/dev/null").c_str(), "r");
            char line[512];
            while (p && std::fgets(line, sizeof line, p)) {
            }
            if (p)
                pclose(p);
        }
        shell.push_back(microseconds(Clock::now() - start));
    }
    report("GetParameters p50 (whole document)", percentile(driver, 50), percentile(shell, 50), "us",
           "find via popen, lists only");
    IComponentBase* o = c.object();
    host.destroy(o);
    return 0;
}
