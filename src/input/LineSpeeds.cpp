#include "input/LineSpeeds.h"

#include <termios.h>

const LineSpeed kLineSpeeds[11] = {
    {110, B110},     {300, B300},     {600, B600},     {1200, B1200},   {2400, B2400},    {4800, B4800},
    {9600, B9600},   {19200, B19200}, {38400, B38400}, {57600, B57600}, {115200, B115200},
};

const LineSpeed& lineSpeedFor(uint32_t baud)
{
    for (const LineSpeed& speed : kLineSpeeds)
        if (speed.baud == baud)
            return speed;
    return kLineSpeeds[6];
}
