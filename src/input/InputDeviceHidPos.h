#pragma once
#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "input/DeviceSettings.h"
#include "input/DeviceWatch.h"
#include "input/HidPosAssembler.h"
#include "input/HidrawNode.h"
#include "input/InputDevice.h"
#include "util/ReaderThread.h"

// Reads a USB scanner in its HID point-of-sale mode from /dev/hidrawN on its
// own thread. Each report chain is one code, delivered like a serial code
// (its bytes in Base64); no suffix or time-out frames it. When the scanner is
// unplugged the reader waits for the same device (vendor, product, serial) to
// come back, under whatever node number, and reads it again.
//
// Thread contract: start() and the destructor on the owner's thread; the
// callback on the reader's thread only.
class InputDeviceHidPos : public InputDevice {
public:
    // For displays that show the AIM identifier beside the code: receives
    // each code's Base64 text with its symbology instead of the data callback.
    using ScanCallback = std::function<void(const std::wstring& base64, const std::string& symbology)>;

    InputDeviceHidPos(DataCallback callback, const DeviceSettings& settings, ScanCallback onScan = nullptr);
    ~InputDeviceHidPos() override;

    // Opens the node the port names and starts the reader; false (nothing
    // left behind) when the node is missing, unreadable or not a scanner.
    bool start();

private:
    void run();
    bool openNode(const HidrawNode& node);
    void closeNode();
    void readReport();
    void nodesChanged();
    void lost();
    void tryReopen();
    // Without udev a scanner that went away is looked for on a timer.
    bool retryPending() const { return fd < 0 && (reopenWanted || watch.fd() < 0); }
    using Clock = std::chrono::steady_clock;
    std::optional<Clock::time_point> nextDeadline() const;

    const DeviceSettings settings;
    const ScanCallback onScan;
    int fd = -1;
    HidrawNode device;  // the scanner being read, as it was last seen
    std::optional<HidPosAssembler> assembler;
    std::string report;
    DeviceWatch watch{"hidraw"};
    bool reopenWanted = false;
    Clock::time_point lastAttempt;
    std::optional<Clock::time_point> secondLook;  // check once more that the node is still there
    ReaderThread thread;
};
