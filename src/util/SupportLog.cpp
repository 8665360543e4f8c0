#include "util/SupportLog.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <deque>
#include <fstream>
#include <mutex>
#include <thread>

#include "util/Logger.h"

namespace {

constexpr size_t kQueueLimit = 1024;

class Writer {
public:
    explicit Writer(std::string path) : path(std::move(path)), thread([this] { run(); })
    {
        std::string program;
        std::ifstream("/proc/self/comm") >> program;
        push(stamped("support log of the input-device driver opened in process " + std::to_string(getpid()) + " (" +
                     program + ")"));
    }
    ~Writer()
    {
        {
            std::lock_guard<std::mutex> g(lock);
            stopping = true;
        }
        wake.notify_one();
        thread.join();
        if (fd >= 0)
            close(fd);
    }

    void push(std::string line)
    {
        bool first;
        {
            std::lock_guard<std::mutex> g(lock);
            if (queue.size() >= kQueueLimit) {
                ++dropped;
                return;
            }
            first = queue.empty();
            queue.push_back(std::move(line));
        }
        // The writer sleeps only on an empty queue.
        if (first)
            wake.notify_one();
    }

private:
    void run()
    {
        std::unique_lock<std::mutex> g(lock);
        for (;;) {
            wake.wait(g, [this] { return stopping || !queue.empty(); });
            std::deque<std::string> batch;
            batch.swap(queue);
            size_t lost = dropped;
            dropped = 0;
            const bool last = stopping;
            g.unlock();
            if (lost)
                batch.push_front(stamped(std::to_string(lost) + " lines dropped: the log could not keep up"));
            lost = writeAll(batch);
            g.lock();
            dropped += lost;
            if (last && queue.empty())
                return;
        }
    }

    // Never blocks: a file that takes nothing now loses the lines, counted.
    size_t writeAll(const std::deque<std::string>& batch)
    {
        if (fd < 0)
            fd = open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_CLOEXEC, 0644);
        size_t lost = 0;
        for (const std::string& line : batch)
            if (fd < 0 || ::write(fd, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
                ++lost;
        return lost;
    }

    const std::string path;
    int fd = -1;
    std::mutex lock;
    std::condition_variable wake;
    std::deque<std::string> queue;
    size_t dropped = 0;
    bool stopping = false;
    std::thread thread;  // last: starts once the rest is ready

public:
    static std::string stamped(const std::string& text)
    {
        const auto now = std::chrono::system_clock::now();
        const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
        const long millis = static_cast<long>(
            std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000);
        std::tm local{};
        localtime_r(&seconds, &local);
        char when[32];
        std::strftime(when, sizeof when, "%Y-%m-%d %H:%M:%S", &local);
        char head[64];
        std::snprintf(head, sizeof head, "%s.%03ld [%ld] ", when, millis, static_cast<long>(syscall(SYS_gettid)));
        return head + text + "\n";
    }
};

std::string logPath()
{
    const char* named = std::getenv("RAVLIN_LOG");
    if (!named || !*named)
        return std::string();
    struct stat st;
    if (stat(named, &st) == 0 && S_ISDIR(st.st_mode))
        return std::string(named) + "/" + getLogFileName();
    return named;
}

// Made on first use, destroyed (writer joined) when the library is unloaded.
Writer* writer()
{
    static const std::string path = logPath();
    if (path.empty())
        return nullptr;
    static Writer instance(path);
    return &instance;
}

}  // namespace

namespace SupportLog {

bool enabled()
{
    return writer() != nullptr;
}

void write(const std::string& line) noexcept
{
    try {
        if (Writer* w = writer())
            w->push(Writer::stamped(line));
    } catch (...) {
        // A line that cannot be made is a line lost, never a reader stopped.
    }
}

std::string describeCode(const std::wstring& base64)
{
    size_t padding = 0;
    for (size_t i = base64.size(); i > 0 && base64[i - 1] == L'='; --i)
        ++padding;
    const size_t bytes = base64.size() / 4 * 3 - padding;
    // FNV-1a over the Base64 text: tells equal codes apart without saying what they held.
    uint32_t digest = 2166136261u;
    for (wchar_t c : base64) {
        digest ^= static_cast<uint32_t>(c);
        digest *= 16777619u;
    }
    char text[64];
    std::snprintf(text, sizeof text, "%zu bytes, digest %08x", bytes, digest);
    return text;
}

}  // namespace SupportLog
