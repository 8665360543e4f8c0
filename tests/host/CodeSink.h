#pragma once
// Collects what a source delivers to its data callback, with the thread it came on.
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include "HangTimeout.h"
#include "input/InputDevice.h"

class CodeSink {
public:
    DataCallback callback()
    {
        return [this](const std::wstring& text) {
            std::lock_guard<std::mutex> g(lock);
            codes.push_back(text);
            thread = static_cast<pid_t>(syscall(SYS_gettid));
            arrived.notify_all();
        };
    }
    std::vector<std::wstring> waitFor(size_t n, std::chrono::milliseconds deadline = kHangTimeout)
    {
        std::unique_lock<std::mutex> g(lock);
        arrived.wait_for(g, deadline, [&] { return codes.size() >= n; });
        return codes;
    }
    std::vector<std::wstring> now()
    {
        std::lock_guard<std::mutex> g(lock);
        return codes;
    }
    pid_t readerThread()
    {
        std::lock_guard<std::mutex> g(lock);
        return thread;
    }

private:
    std::mutex lock;
    std::condition_variable arrived;
    std::vector<std::wstring> codes;
    pid_t thread = 0;
};
