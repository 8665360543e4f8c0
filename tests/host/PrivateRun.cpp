#include "PrivateRun.h"

#include <sys/mount.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "PrivateDev.h"

void enterPrivateRun(int argc, char** argv)
{
    enterNamespaces("RAVLIN_PRIVATE_RUN", {"--mount", "--net"}, argc, argv);
    mkdir("/tmp/.X11-unix", 01777);
    if (mount("tmpfs", "/tmp/.X11-unix", "tmpfs", 0, "mode=1777,size=1m") != 0) {
        std::fprintf(stderr, "private run: mount tmpfs on /tmp/.X11-unix: %s\n", std::strerror(errno));
        std::exit(2);
    }
}
