#pragma once
// The thread of a reader together with the descriptor that wakes it. The
// thread sleeps only in wait(), so stop() ends it at once whatever it was
// waiting for, and the owner's destructor never hangs on a quiet device.
#include <poll.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <functional>
#include <thread>

#include "util/WakeDescriptor.h"

class ReaderThread {
public:
    ReaderThread() = default;
    ~ReaderThread() { stop(); }
    ReaderThread(const ReaderThread&) = delete;
    ReaderThread& operator=(const ReaderThread&) = delete;

    // Runs `body` on a new thread; false when no thread or wake descriptor could be had.
    bool start(std::function<void()> body);
    // Wakes the thread and joins it; nothing when it never started.
    void stop();
    bool stopping() const { return stopRequested; }

    // Sleeps until one of `fds` has an event, `timeoutMs` passes (-1: no limit)
    // or stop() is called; fills each revents. False when told to stop.
    // Descriptors below 0 are skipped, as poll does.
    template <size_t N>
    bool wait(std::array<pollfd, N>& fds, int timeoutMs) { return wait(fds.data(), N, timeoutMs); }
    bool wait(pollfd* fds, size_t count, int timeoutMs);

private:
    std::thread thread;
    std::atomic<bool> stopRequested{false};
    WakeDescriptor wakeUp;
};
