#pragma once
// A helper program the test starts and talks to over its standard streams.
#include <sys/types.h>

#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "HangTimeout.h"

class ChildProcess {
public:
    // With mergeErrors its standard error comes through readLine too.
    ChildProcess(const std::vector<std::string>& argv, const std::vector<std::string>& extraEnv = {},
                 bool mergeErrors = false);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // One line of its output, or empty after the deadline.
    std::string readLine(std::chrono::milliseconds timeout = kHangTimeout);
    void closeInput();
    pid_t id() const { return pid; }
    // Its exit status, waiting for it; -1 when it did not end in time (it is killed).
    int wait(std::chrono::milliseconds timeout = kHangTimeout);

    // Runs a program to its end: everything it printed (both streams) and its exit status.
    static std::pair<std::string, int> run(const std::vector<std::string>& argv,
                                           const std::vector<std::string>& extraEnv = {});

private:
    pid_t pid = -1;
    int in = -1;
    int out = -1;
    std::string buffered;
};
