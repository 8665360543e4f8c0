#pragma once
// A private X server for a test: Xvfb on a display number it picks itself,
// waited for until it accepts connections. DISPLAY points at it while it lives.
#include <sys/types.h>

#include <string>

class XvfbServer {
public:
    XvfbServer();
    ~XvfbServer();
    XvfbServer(const XvfbServer&) = delete;
    XvfbServer& operator=(const XvfbServer&) = delete;

    const std::string& display() const { return name; }
    // Ends the server now, as a crash or a logout would.
    void kill();

private:
    pid_t pid = -1;
    std::string name;
    std::string previousDisplay;
    bool hadDisplay = false;
};

// Sets DISPLAY for one scope, or unsets it when given an empty string.
class DisplayOverride {
public:
    explicit DisplayOverride(const std::string& value);
    ~DisplayOverride();

private:
    std::string previous;
    bool had;
};
