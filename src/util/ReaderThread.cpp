#include "util/ReaderThread.h"

#include <cerrno>

namespace {
constexpr size_t kMaxWaitSlots = 8;
}

bool ReaderThread::start(std::function<void()> body)
{
    if (wakeUp.fd() < 0 || thread.joinable())
        return false;
    stopRequested = false;
    try {
        thread = std::thread([body = std::move(body)] {
            try {
                body();
            } catch (...) {
                // Nothing may leave a reader's thread: it would end the host process.
            }
        });
    } catch (...) {
        return false;
    }
    return true;
}

void ReaderThread::stop()
{
    if (!thread.joinable())
        return;
    stopRequested = true;
    wakeUp.wake();
    thread.join();
    wakeUp.clear();  // the descriptor may serve a next start()
}

bool ReaderThread::wait(pollfd* fds, size_t count, int timeoutMs)
{
    enum { WakeSlot, FirstCallerSlot };
    pollfd all[kMaxWaitSlots + 1];
    all[WakeSlot] = {wakeUp.fd(), POLLIN, 0};
    count = count < kMaxWaitSlots ? count : kMaxWaitSlots;
    for (size_t i = 0; i < count; ++i)
        all[FirstCallerSlot + i] = fds[i];
    int rc;
    do {
        rc = poll(all, count + 1, timeoutMs);
    } while (rc < 0 && errno == EINTR);
    for (size_t i = 0; i < count; ++i)
        fds[i].revents = rc > 0 ? all[FirstCallerSlot + i].revents : 0;
    return !stopRequested && !(all[WakeSlot].revents & POLLIN);
}
