#include "PrivateRun.h"

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

[[noreturn]] void die(const std::string& what)
{
    std::fprintf(stderr, "private run: %s: %s (needs unshare as root, or user namespaces)\n", what.c_str(),
                 std::strerror(errno));
    std::exit(2);
}

}  // namespace

void enterPrivateRun(int argc, char** argv)
{
    if (!std::getenv("RAVLIN_PRIVATE_RUN")) {
        setenv("RAVLIN_PRIVATE_RUN", "1", 1);
        char self[4096];
        const ssize_t n = readlink("/proc/self/exe", self, sizeof self - 1);
        if (n <= 0)
            die("readlink /proc/self/exe");
        self[n] = '\0';
        std::vector<char*> args = {const_cast<char*>("unshare"), const_cast<char*>("--mount"),
                                   const_cast<char*>("--net"), const_cast<char*>("--propagation"),
                                   const_cast<char*>("private")};
        if (getuid() != 0)
            args.push_back(const_cast<char*>("--map-root-user"));
        args.push_back(self);
        for (int i = 1; i < argc; ++i)
            args.push_back(argv[i]);
        args.push_back(nullptr);
        execvp("unshare", args.data());
        die("exec unshare");
    }
    mkdir("/tmp/.X11-unix", 01777);
    if (mount("tmpfs", "/tmp/.X11-unix", "tmpfs", 0, "mode=1777,size=1m") != 0)
        die("mount tmpfs on /tmp/.X11-unix");
}
