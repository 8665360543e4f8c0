#pragma once
// The AIM identifier of each scan of a HID POS scanner, for `listen --json`.
// The host's events carry no symbology, so the tool reads the scanner itself:
// hidraw hands every report to every open of the node, so this second reader
// sees the same scans, in the same order, as the driver's, and nothing the
// host sees changes.
#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "MonotonicCondition.h"

class InputDeviceHidPos;

class SymbologyTap {
public:
    SymbologyTap();
    ~SymbologyTap();

    // False when the port names no HID POS scanner that can be read.
    bool start(uint32_t port);
    // The symbology of the next scan, waiting up to `patience` for this reader
    // to see it (the driver's reader may have been the quicker).
    std::optional<std::string> next(std::chrono::milliseconds patience = std::chrono::milliseconds(200));

private:
    std::mutex lock;
    MonotonicCondition arrived;
    std::deque<std::string> symbologies;
    std::unique_ptr<InputDeviceHidPos> reader;
};
