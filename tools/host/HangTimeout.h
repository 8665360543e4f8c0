#pragma once
// How long a test waits for something that must happen: only a hang reaches
// it, however busy the machine is with other work or another run of the suite.
#include <chrono>
#include <thread>

inline constexpr std::chrono::seconds kHangTimeout{60};

// Checks every few milliseconds until the condition holds or the time-out
// passes; returns whether it holds.
template <class Condition>
bool waitUntil(Condition condition, std::chrono::milliseconds timeout = kHangTimeout)
{
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}
