#pragma once
// Percentiles and the one table format every benchmark prints: each figure
// beside the baseline measured in the same run.
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

inline double percentile(std::vector<double> values, double p)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    const size_t i = std::min(values.size() - 1, static_cast<size_t>(p / 100.0 * static_cast<double>(values.size())));
    return values[i];
}

inline double microseconds(std::chrono::steady_clock::duration d)
{
    return std::chrono::duration<double, std::micro>(d).count();
}

// One row: figure, value, baseline (0 when none), unit.
inline void report(const std::string& figure, double value, double baseline, const std::string& unit,
                   const std::string& baselineName = "")
{
    if (baseline > 0)
        std::printf("%-44s %12.1f %-4s  baseline %12.1f %-4s (%s)  ratio %.2f\n", figure.c_str(), value,
                    unit.c_str(), baseline, unit.c_str(), baselineName.c_str(), value / baseline);
    else
        std::printf("%-44s %12.1f %-4s\n", figure.c_str(), value, unit.c_str());
    std::fflush(stdout);
}

// Times a thread of this process gave up the processor (its wake-ups).
inline long voluntarySwitches(pid_t tid)
{
    std::ifstream status("/proc/self/task/" + std::to_string(tid) + "/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind("voluntary_ctxt_switches:", 0) == 0)
            return std::stol(line.substr(line.find(':') + 1));
    return -1;
}

// Wake-ups of an idle reader thread over a while, beside those of a 1 ms sleep
// loop over the same while.
struct IdleWakeups {
    long reader;
    long sleepLoop;
};

inline IdleWakeups idleWakeups(pid_t reader, std::chrono::seconds span)
{
    using namespace std::chrono_literals;
    const long before = voluntarySwitches(reader);
    std::atomic<bool> stop{false};
    std::atomic<pid_t> sleeper{0};
    std::thread loop([&] {
        sleeper = static_cast<pid_t>(syscall(SYS_gettid));
        while (!stop)
            std::this_thread::sleep_for(1ms);
    });
    while (sleeper == 0)
        std::this_thread::yield();
    const long loopBefore = voluntarySwitches(sleeper);
    std::this_thread::sleep_for(span);
    IdleWakeups result{voluntarySwitches(reader) - before, voluntarySwitches(sleeper) - loopBefore};
    stop = true;
    loop.join();
    return result;
}
