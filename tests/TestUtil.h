#pragma once
// Small helpers shared by the test programs.
#include <string>

// Runs a shell command with `input` on its standard input; returns its output.
std::string runWithInput(const std::string& command, const std::string& input);
// Runs a shell command and returns its standard output.
std::string runCommand(const std::string& command);
