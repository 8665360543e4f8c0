#pragma once
// The line speeds a serial scanner can be set to: the settings form offers
// exactly these, and the reader applies them.
#include <cstdint>

struct LineSpeed {
    uint32_t baud;
    unsigned constant;  // the termios speed_t
};

extern const LineSpeed kLineSpeeds[11];

// A speed not in the table runs the line at 9600 baud.
const LineSpeed& lineSpeedFor(uint32_t baud);
