#pragma once
// Small helpers shared by the test programs.
#include <string>

// Runs a shell command with `input` on its standard input; returns its output.
std::string runWithInput(const std::string& command, const std::string& input);
// Runs a shell command and returns its standard output.
std::string runCommand(const std::string& command);

#include <sys/types.h>

// CPU time (user + system) a thread of this process has used, in seconds.
double threadCpuSeconds(pid_t tid);
// Entries of /proc/self/fd and /proc/self/task: descriptors and threads now open.
size_t openDescriptorCount();
size_t threadCount();
