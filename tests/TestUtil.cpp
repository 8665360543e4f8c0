#include "TestUtil.h"

#include <malloc.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "util/SymbolCodecs.h"

std::wstring b64(const std::string& bytes)
{
    const std::string text = raw2Base64(bytes);
    return std::wstring(text.begin(), text.end());
}

DeviceSettings serialPort(uint32_t port, std::string suffix)
{
    DeviceSettings settings;
    settings.port = port;
    settings.suffix = std::move(suffix);
    return settings;
}

DeviceSettings keyboardNamed(const std::string& device)
{
    DeviceSettings settings;
    settings.port = 0;
    settings.keyboardDevice = device;
    return settings;
}

std::string runWithInput(const std::string& command, const std::string& input)
{
    char path[] = "/tmp/ravlin-test-input-XXXXXX";
    const int fd = mkstemp(path);
    if (fd < 0)
        throw std::runtime_error("mkstemp failed");
    if (!input.empty() && write(fd, input.data(), input.size()) != static_cast<ssize_t>(input.size()))
        throw std::runtime_error("write failed");
    close(fd);
    const std::string out = runCommand("(" + command + ") < " + path);
    unlink(path);
    return out;
}

std::string runCommand(const std::string& command)
{
    FILE* p = popen(command.c_str(), "r");
    if (!p)
        throw std::runtime_error("popen failed: " + command);
    std::string out;
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, p)) > 0)
        out.append(buf, n);
    pclose(p);
    return out;
}

#include <dirent.h>

double threadCpuSeconds(pid_t tid)
{
    std::ifstream stat("/proc/self/task/" + std::to_string(tid) + "/stat");
    std::string text((std::istreambuf_iterator<char>(stat)), std::istreambuf_iterator<char>());
    // Fields after the parenthesised name: state is field 3, utime 14, stime 15.
    std::istringstream rest(text.substr(text.rfind(')') + 2));
    std::string field;
    unsigned long long utime = 0, stime = 0;
    for (int i = 3; i <= 15 && rest >> field; ++i) {
        if (i == 14) utime = std::stoull(field);
        if (i == 15) stime = std::stoull(field);
    }
    return static_cast<double>(utime + stime) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

unsigned long long threadBytesRead(pid_t tid)
{
    std::ifstream io("/proc/self/task/" + std::to_string(tid) + "/io");
    for (std::string key; io >> key;) {
        unsigned long long value = 0;
        io >> value;
        if (key == "rchar:")
            return value;
    }
    return 0;
}

// The numbered entries of a /proc folder (descriptors, threads).
static std::set<pid_t> numberedEntries(const char* path)
{
    std::set<pid_t> numbers;
    if (DIR* d = opendir(path)) {
        while (dirent* e = readdir(d))
            if (e->d_name[0] != '.')
                numbers.insert(static_cast<pid_t>(std::atoi(e->d_name)));
        closedir(d);
    }
    return numbers;
}

size_t openDescriptorCount() { return numberedEntries("/proc/self/fd").size(); }

std::set<std::pair<int, std::string>> openDescriptors()
{
    std::set<std::pair<int, std::string>> descriptors;
    for (pid_t fd : numberedEntries("/proc/self/fd")) {
        char target[4096];
        const ssize_t n = readlink(("/proc/self/fd/" + std::to_string(fd)).c_str(), target, sizeof target);
        if (n > 0)
            descriptors.emplace(fd, std::string(target, static_cast<size_t>(n)));
    }
    return descriptors;
}
std::set<pid_t> threadIds() { return numberedEntries("/proc/self/task"); }
size_t threadCount() { return threadIds().size(); }

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// The sanitizers replace malloc; their allocator knows what is live.
extern "C" size_t __sanitizer_get_current_allocated_bytes();
size_t liveHeapBytes() { return __sanitizer_get_current_allocated_bytes(); }
#elif defined(__GLIBC__) && (__GLIBC__ > 2 || __GLIBC_MINOR__ >= 33)
size_t liveHeapBytes()
{
    const struct mallinfo2 m = mallinfo2();
    return m.uordblks + m.hblkhd;
}
#else
// glibc before 2.33 (the release build's Debian 11) has only mallinfo, whose
// int fields are enough for the few megabytes a test holds.
size_t liveHeapBytes()
{
    const struct mallinfo m = mallinfo();
    return static_cast<size_t>(static_cast<unsigned>(m.uordblks)) + static_cast<unsigned>(m.hblkhd);
}
#endif
