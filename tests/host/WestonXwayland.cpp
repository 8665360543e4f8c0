#include "WestonXwayland.h"

#include <stdlib.h>
#include <unistd.h>

#include <stdexcept>

WestonXwayland::WestonXwayland()
{
    char dir[] = "/tmp/ravlin-weston-XXXXXX";
    if (!mkdtemp(dir))
        throw std::runtime_error("mkdtemp failed");
    runtimeDir = dir;
    // Weston must not run under a test's device testbed: it would find no
    // real /dev there.
    weston = std::make_unique<ChildProcess>(
        std::vector<std::string>{"/usr/bin/env", "-u", "LD_PRELOAD", "XDG_RUNTIME_DIR=" + runtimeDir, "weston",
                                 "--backend=x11-backend.so", "--xwayland", "--socket=wayland-ravlin",
                                 "--idle-time=0", "--no-config"},
        std::vector<std::string>{}, true);
    const std::string marker = "xserver listening on display ";
    for (std::string line; (line = weston->readLine()) != "";) {
        const size_t at = line.find(marker);
        if (at != std::string::npos) {
            name = line.substr(at + marker.size());
            break;
        }
    }
    if (name.empty())
        throw std::runtime_error("weston started no Xwayland");
    displayOverride = std::make_unique<DisplayOverride>(name);
}

WestonXwayland::~WestonXwayland()
{
    displayOverride.reset();
    weston.reset();  // Xwayland ends with its compositor
    const std::string command = "rm -rf '" + runtimeDir + "'";
    if (system(command.c_str()) != 0) {
    }
}
