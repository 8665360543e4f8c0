#pragma once
// Percentiles and the one table format every benchmark prints: each figure
// beside the baseline measured in the same run.
#include <algorithm>
#include <chrono>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <fstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "AddinHost.h"

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

// How often a thread of this process has gone to sleep: its wake-ups.
inline long voluntarySwitches(pid_t tid)
{
    std::ifstream status("/proc/self/task/" + std::to_string(tid) + "/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind("voluntary_ctxt_switches:", 0) == 0)
            return std::stol(line.substr(line.find(':') + 1));
    return -1;
}

// Wake-ups over `span` of a reader that should be asleep, beside those of a
// thread that wakes every `baselineTickMs`, measured over the same span.
inline std::pair<long, long> idleWakeups(pid_t reader, int baselineTickMs, std::chrono::seconds span)
{
    const long before = voluntarySwitches(reader);
    std::atomic<bool> stop{false};
    std::atomic<pid_t> sleeper{0};
    std::thread loop([&] {
        sleeper = static_cast<pid_t>(syscall(SYS_gettid));
        while (!stop)
            poll(nullptr, 0, baselineTickMs);
    });
    while (sleeper == 0)
        std::this_thread::yield();
    const long loopBefore = voluntarySwitches(sleeper);
    std::this_thread::sleep_for(span);
    const std::pair<long, long> wakeups{voluntarySwitches(reader) - before, voluntarySwitches(sleeper) - loopBefore};
    stop = true;
    loop.join();
    return wakeups;
}

// How long Close takes, over open/close cycles of one component.
inline std::vector<double> closeLatencies(Component& c, int cycles)
{
    std::vector<double> latencies;
    for (int i = 0; i < cycles; ++i) {
        const std::wstring id = c.open();
        const auto start = std::chrono::steady_clock::now();
        c.close(id);
        latencies.push_back(microseconds(std::chrono::steady_clock::now() - start));
    }
    return latencies;
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

// A latency's p50 and p99 rows, each beside the same percentile of the
// baseline measured in the run (none when `baseline` is empty).
inline void reportLatency(const std::string& figure, const std::vector<double>& values,
                          const std::vector<double>& baseline = {}, const std::string& baselineName = "")
{
    for (const int p : {50, 99})
        report(figure + " p" + std::to_string(p), percentile(values, p),
               baseline.empty() ? 0 : percentile(baseline, p), "us", baselineName);
}
