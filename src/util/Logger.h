#pragma once
// Logging is switched off in this build: every call site stays, every message is
// dropped, and no file is ever opened. Only the log file's name is computed.
#include <string>

class Logger {
public:
    Logger();
    ~Logger();
    bool SetLogFolder(std::wstring folder);
    void LogToFile(std::wstring message);

private:
    std::string fileName;
};

void log(std::wstring message);
void log(std::string message);

std::string getLogFileName();
// Always 256 characters long (the text, then NULs), or empty when nothing formatted.
std::string getCurrentTimeString(const std::string& format);
