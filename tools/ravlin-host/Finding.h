#pragma once
// One line of ravlin-host doctor's report: what was found about one subject
// (the session, a device, a scan) and, when something is wrong or a setting
// follows from it, what to type.
#include <string>

struct Finding {
    enum class Level { Info, Ok, Problem, Scan, Advice };
    Level level;
    std::string subject;  // "session", "/dev/ttyACM0", "usb:1a86:7523"...
    std::string text;
    std::string fix;  // a command, or NAME=VALUE for SetParameter; may be empty
};

// One finding: a line of text, or one JSON object on a line of its own.
void printFinding(const Finding& finding, bool json);
