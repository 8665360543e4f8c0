#pragma once
// A Wayland session for a test: weston with Xwayland, so that X clients see
// what they see on a Wayland desktop (only Xwayland's virtual devices, such as
// "xwayland-keyboard:N"). Weston runs nested in a private Xvfb, whose keyboard
// gives its seat one (its headless backend has no seat devices). DISPLAY
// points at Xwayland while it lives.
#include <memory>
#include <string>

#include "ChildProcess.h"
#include "XvfbServer.h"

class WestonXwayland {
public:
    WestonXwayland();
    ~WestonXwayland();
    WestonXwayland(const WestonXwayland&) = delete;
    WestonXwayland& operator=(const WestonXwayland&) = delete;

    const std::string& display() const { return name; }

private:
    XvfbServer outer;
    std::string runtimeDir;
    std::unique_ptr<ChildProcess> weston;
    std::string name;
    std::unique_ptr<DisplayOverride> displayOverride;
};
