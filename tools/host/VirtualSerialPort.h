#pragma once
// A scanner on a serial line, simulated by a pseudo-terminal whose slave the
// private /dev names (for example /dev/ttyUSB1). The test writes on the master.
#include <string>

class VirtualSerialPort {
public:
    explicit VirtualSerialPort(std::string deviceName);
    ~VirtualSerialPort();
    VirtualSerialPort(const VirtualSerialPort&) = delete;
    VirtualSerialPort& operator=(const VirtualSerialPort&) = delete;

    void write(const std::string& bytes);
    // Writes what the line takes within the time; returns how many bytes.
    size_t writeSome(const std::string& bytes, int milliseconds);
    // Waits until the reader has taken every byte written so far: a pause
    // that starts after this is a pause on the reader's side too.
    bool waitUntilTaken();
    // Unplugs: the master closes, so the driver's side sees a hang-up.
    void unplug();
    // Plugs a fresh pseudo-terminal in under the same name.
    void plug();
    const std::string& slavePath() const { return slave; }
    const std::string& name() const { return deviceName; }

private:
    std::string deviceName;
    std::string slave;
    int master = -1;
    int watch = -1;  // the slave, held to see how much waits there unread
};
