#include "ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <regex>
#include <stdexcept>
#include <thread>

extern char** environ;

ChildProcess::ChildProcess(const std::vector<std::string>& argv, const std::vector<std::string>& extraEnv,
                           bool mergeErrors)
{
    int toChild[2], fromChild[2];
    if (pipe2(toChild, O_CLOEXEC) != 0 || pipe2(fromChild, O_CLOEXEC) != 0)
        throw std::runtime_error("pipe failed");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, toChild[0], 0);
    posix_spawn_file_actions_adddup2(&actions, fromChild[1], 1);
    if (mergeErrors)
        posix_spawn_file_actions_adddup2(&actions, fromChild[1], 2);
    std::vector<char*> args;
    for (const auto& a : argv)
        args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    std::vector<std::string> envStrings;
    for (char** e = environ; *e; ++e)
        envStrings.push_back(*e);
    envStrings.insert(envStrings.end(), extraEnv.begin(), extraEnv.end());
    std::vector<char*> env;
    for (auto& e : envStrings)
        env.push_back(const_cast<char*>(e.c_str()));
    env.push_back(nullptr);
    const int rc = posix_spawn(&pid, args[0], &actions, nullptr, args.data(), env.data());
    posix_spawn_file_actions_destroy(&actions);
    close(toChild[0]);
    close(fromChild[1]);
    in = toChild[1];
    out = fromChild[0];
    if (rc != 0)
        throw std::runtime_error("cannot start " + argv[0]);
}

ChildProcess::~ChildProcess()
{
    closeInput();
    if (pid > 0) {
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }
    close(out);
}

std::string ChildProcess::readLine(std::chrono::milliseconds timeout)
{
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    for (;;) {
        const size_t newline = buffered.find('\n');
        if (newline != std::string::npos) {
            std::string line = buffered.substr(0, newline);
            buffered.erase(0, newline + 1);
            // What valgrind says of a child it traces is not the child's output.
            if (std::regex_match(line, std::regex("==[0-9]+==.*")))
                continue;
            return line;
        }
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        pollfd p{out, POLLIN, 0};
        if (left.count() <= 0 || poll(&p, 1, static_cast<int>(left.count())) <= 0)
            return std::string();
        char chunk[256];
        const ssize_t n = read(out, chunk, sizeof chunk);
        if (n <= 0)
            return std::string();
        buffered.append(chunk, static_cast<size_t>(n));
    }
}

void ChildProcess::closeInput()
{
    if (in >= 0)
        close(in);
    in = -1;
}

int ChildProcess::wait(std::chrono::milliseconds timeout)
{
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (pid > 0) {
        int status = 0;
        const pid_t r = waitpid(pid, &status, WNOHANG);
        if (r == pid) {
            pid = -1;
            return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        }
        if (std::chrono::steady_clock::now() > deadline)
            return -1;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return -1;
}

std::pair<std::string, int> ChildProcess::run(const std::vector<std::string>& argv,
                                              const std::vector<std::string>& extraEnv)
{
    ChildProcess program(argv, extraEnv, true);
    std::string all;
    for (std::string line; !(line = program.readLine()).empty() || all.empty();) {
        all += line + "\n";
        if (line.empty())
            break;
    }
    return {all, program.wait()};
}
