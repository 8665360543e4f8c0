#include "util/Logger.h"

#include <cstdlib>
#include <ctime>
#include <sstream>
#include <thread>

Logger::Logger() = default;
Logger::~Logger() = default;

bool Logger::SetLogFolder(std::wstring) { return true; }
void Logger::LogToFile(std::wstring) {}

void log(std::wstring) {}
void log(std::string) {}

std::string getCurrentTimeString(const std::string& format)
{
    std::string text(256, '\0');
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    if (std::strftime(text.data(), text.size(), format.c_str(), &local) == 0)
        text.clear();
    return text;
}

std::string getLogFileName()
{
    std::string stamp = getCurrentTimeString("%Y%m%d%H%M%S");
    if (stamp.empty())
        stamp = std::to_string(std::rand());
    std::ostringstream name;
    name << "Ravlin_" << "x" << 64 << "_" << "t" << std::this_thread::get_id() << "_"
         << stamp.c_str() << ".txt";
    return name.str();
}
