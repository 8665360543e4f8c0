#pragma once
#include <string>

#include "input/DeviceSettings.h"
#include "input/InputDevice.h"
#include "util/ReaderThread.h"

class SerialFramer;

// Reads a scanner on a serial line (real port, CDC-ACM or USB-serial adapter)
// on its own thread, framing codes by the suffix byte.
class InputDeviceComPort : public InputDevice {
public:
    InputDeviceComPort(DataCallback callback, const DeviceSettings& settings);
    ~InputDeviceComPort() override;

    // Opens and configures the line and starts the reader; false leaves nothing behind.
    bool start();
    // Whether the last open found the line held by another reader.
    bool busy() const { return lineBusy; }

private:
    void run();
    // One wait and what follows it; false when told to stop.
    bool reopenAfterPause();
    bool readOnce(SerialFramer& framer, int quietMs, int& emptyReads);
    bool openLine();
    void closeLine();
    int quietWindowMs() const;
    void deliverCode(const std::string& code) const;

    const DeviceSettings settings;
    const std::string devicePath;
    int fd = -1;
    bool lineBusy = false;
    ReaderThread thread;
};
