#include "XvfbServer.h"

#include <X11/Xlib.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <vector>

#include "HangTimeout.h"

extern char** environ;

XvfbServer::XvfbServer()
{
    int ready[2];
    if (pipe2(ready, O_CLOEXEC) != 0)
        throw std::runtime_error("pipe failed");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ready[1], 3);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    std::vector<const char*> args = {"Xvfb", "-displayfd", "3", "-screen", "0", "800x600x24",
                                     "-nolisten", "tcp", "-noreset", nullptr};
    const int rc = posix_spawnp(&pid, "Xvfb", &actions, nullptr, const_cast<char**>(args.data()), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ready[1]);
    if (rc != 0) {
        close(ready[0]);
        throw std::runtime_error("cannot start Xvfb (package xvfb)");
    }
    // Xvfb writes its display number once it accepts connections.
    std::string number;
    pollfd p{ready[0], POLLIN, 0};
    char c;
    const int patienceMs = static_cast<int>(std::chrono::milliseconds(kHangTimeout).count());
    while (poll(&p, 1, patienceMs) > 0 && read(ready[0], &c, 1) == 1 && c != '\n')
        number += c;
    close(ready[0]);
    if (number.empty()) {
        kill();
        throw std::runtime_error("Xvfb did not start");
    }
    name = ":" + number;
    const char* current = std::getenv("DISPLAY");
    hadDisplay = current != nullptr;
    if (current)
        previousDisplay = current;
    setenv("DISPLAY", name.c_str(), 1);
}

XvfbServer::~XvfbServer()
{
    kill();
    if (hadDisplay)
        setenv("DISPLAY", previousDisplay.c_str(), 1);
    else
        unsetenv("DISPLAY");
}

void XvfbServer::kill()
{
    if (pid > 0) {
        ::kill(pid, SIGTERM);
        int status;
        waitpid(pid, &status, 0);
        pid = -1;
    }
}

DisplayOverride::DisplayOverride(const std::string& value)
{
    const char* current = std::getenv("DISPLAY");
    had = current != nullptr;
    if (current)
        previous = current;
    if (value.empty())
        unsetenv("DISPLAY");
    else
        setenv("DISPLAY", value.c_str(), 1);
}

DisplayOverride::~DisplayOverride()
{
    if (had)
        setenv("DISPLAY", previous.c_str(), 1);
    else
        unsetenv("DISPLAY");
}
