#pragma once
#include <atomic>
#include <string>
#include <thread>

#include "input/InputDevice.h"
#include "input/InputDeviceComPortFactory.h"
#include "util/WakeDescriptor.h"

// Reads a scanner on a serial line (real port, CDC-ACM or USB-serial adapter)
// on its own thread, framing codes by the suffix byte.
class InputDeviceComPort : public InputDevice {
public:
    explicit InputDeviceComPort(DataCallback callback);
    ~InputDeviceComPort() override;

    // Opens and configures the line and starts the reader; false leaves nothing behind.
    bool start(const InputDeviceComPortFactory& settings);

    static std::string devicePathFor(uint32_t portNumber);
    static unsigned baudFor(uint32_t speed);

private:
    void run();
    bool openLine();
    void closeLine();
    // Waits for the line (when open) or the wake descriptor; false when told to stop.
    bool waitForInput(int timeoutMs, short& lineEvents);
    int quietWindowMs() const;
    void deliverCode(const std::string& code) const;

    int fd = -1;
    WakeDescriptor wakeUp;
    std::thread thread;
    std::atomic<bool> running{false};
    std::string suffix;  // narrow (UTF-8) form of the factory's suffix
    InputDeviceComPortFactory settings;
    std::string devicePath;
};
