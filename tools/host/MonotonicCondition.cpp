#include "MonotonicCondition.h"

#include <cerrno>
#include <ctime>

MonotonicCondition::MonotonicCondition()
{
    pthread_condattr_t attributes;
    pthread_condattr_init(&attributes);
    pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
    pthread_cond_init(&condition, &attributes);
    pthread_condattr_destroy(&attributes);
}

MonotonicCondition::~MonotonicCondition()
{
    pthread_cond_destroy(&condition);
}

void MonotonicCondition::notifyAll()
{
    pthread_cond_broadcast(&condition);
}

timespec MonotonicCondition::deadlineAfter(std::chrono::milliseconds timeout)
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const long long nanos = static_cast<long long>(now.tv_nsec) + (timeout.count() % 1000) * 1000000LL;
    now.tv_sec += static_cast<time_t>(timeout.count() / 1000 + nanos / 1000000000LL);
    now.tv_nsec = static_cast<long>(nanos % 1000000000LL);
    return now;
}

bool MonotonicCondition::waitUntil(std::unique_lock<std::mutex>& lock, const timespec& deadline)
{
    return pthread_cond_timedwait(&condition, lock.mutex()->native_handle(), &deadline) != ETIMEDOUT;
}
