#pragma once
// Small helpers shared by the test programs.
#include <cstdint>
#include <set>
#include <utility>
#include <string>

#include "input/DeviceSettings.h"

// The Base64 text a reader delivers for these bytes.
std::wstring b64(const std::string& bytes);
// A source's settings as the performer would make them from its defaults.
DeviceSettings serialPort(uint32_t port, std::string suffix = "\r");
DeviceSettings keyboardNamed(const std::string& device);

// Runs a shell command with `input` on its standard input; returns its output.
std::string runWithInput(const std::string& command, const std::string& input);
// Runs a shell command and returns its standard output.
std::string runCommand(const std::string& command);

#include <sys/types.h>

// CPU time (user + system) a thread of this process has used, in seconds.
double threadCpuSeconds(pid_t tid);
// Bytes a thread of this process has had from read() and its kin so far.
unsigned long long threadBytesRead(pid_t tid);
// Descriptors now open (entries of /proc/self/fd).
size_t openDescriptorCount();
// The descriptors now open, each with what it refers to. Where a library of
// the test (umockdev's GLib) opens and closes descriptors of its own, compare
// these rather than counts.
std::set<std::pair<int, std::string>> openDescriptors();
// The ids of this process's threads now, and how many. Where a library of the
// test (umockdev's GLib) starts and ends threads of its own, compare ids.
std::set<pid_t> threadIds();
size_t threadCount();
// Heap bytes in use now, by malloc's count (the sanitizers' when they run).
size_t liveHeapBytes();
