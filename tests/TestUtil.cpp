#include "TestUtil.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

std::string runWithInput(const std::string& command, const std::string& input)
{
    char path[] = "/tmp/ravlin-test-input-XXXXXX";
    const int fd = mkstemp(path);
    if (fd < 0)
        throw std::runtime_error("mkstemp failed");
    if (!input.empty() && write(fd, input.data(), input.size()) != static_cast<ssize_t>(input.size()))
        throw std::runtime_error("write failed");
    close(fd);
    const std::string out = runCommand(command + " < " + path);
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
