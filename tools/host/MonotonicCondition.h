#pragma once
// A condition variable whose timed waits run on the monotonic clock, through
// pthread_cond_timedwait on a condition made for CLOCK_MONOTONIC (glibc 2.3.3
// and later). std::condition_variable's timed waits need glibc 2.30's
// pthread_cond_clockwait for that, or wait on the wall clock, which a clock
// change stretches or cuts short; ravlin-host has to run where glibc is 2.17.
#include <pthread.h>

#include <chrono>
#include <mutex>

class MonotonicCondition {
public:
    MonotonicCondition();
    ~MonotonicCondition();
    MonotonicCondition(const MonotonicCondition&) = delete;
    MonotonicCondition& operator=(const MonotonicCondition&) = delete;

    void notifyAll();
    // Waits until `done` holds or the time passes; returns `done()`.
    template <class Predicate>
    bool waitFor(std::unique_lock<std::mutex>& lock, std::chrono::milliseconds timeout, Predicate done)
    {
        const timespec deadline = deadlineAfter(timeout);
        while (!done())
            if (!waitUntil(lock, deadline))
                return done();
        return true;
    }

private:
    static timespec deadlineAfter(std::chrono::milliseconds timeout);
    // False once the deadline has passed.
    bool waitUntil(std::unique_lock<std::mutex>& lock, const timespec& deadline);

    pthread_cond_t condition;
};
