#include "Processes.h"

#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>

namespace {

namespace fs = std::filesystem;

std::string nameOf(const fs::path& process)
{
    std::ifstream comm(process / "comm");
    std::string name;
    std::getline(comm, name);
    return name;
}

// Calls `visit` with each process but this one until it returns true.
void forEachOtherProcess(const std::function<bool(const fs::path&, const std::string& pid)>& visit)
{
    std::error_code error;
    for (const auto& process : fs::directory_iterator("/proc", error)) {
        const std::string pid = process.path().filename();
        if (pid.find_first_not_of("0123456789") != std::string::npos || pid == std::to_string(getpid()))
            continue;
        if (visit(process.path(), pid))
            return;
    }
}

}  // namespace

std::string holdersOf(const std::string& path)
{
    char device[PATH_MAX];
    if (path.empty() || !realpath(path.c_str(), device))
        return std::string();
    std::string holders;
    forEachOtherProcess([&](const fs::path& process, const std::string& pid) {
        std::error_code error;
        for (const auto& fd : fs::directory_iterator(process / "fd", error))
            if (fs::read_symlink(fd.path(), error) == device) {
                holders += (holders.empty() ? "" : ", ") + pid + " (" + nameOf(process) + ")";
                break;
            }
        return false;
    });
    return holders;
}

std::string processNamed(const std::string& name)
{
    std::string found;
    forEachOtherProcess([&](const fs::path& process, const std::string& pid) {
        if (nameOf(process) == name)
            found = pid;
        return !found.empty();
    });
    return found;
}
