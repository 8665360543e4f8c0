#pragma once
// A /dev/hidrawN node as sysfs describes it: which USB device is behind it and
// whether it is a scanner this driver can read.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "input/HidReportDescriptor.h"

struct HidrawNode {
    unsigned number = 0;
    uint16_t vendorId = 0;
    uint16_t productId = 0;
    std::string serial;   // the USB serial number; may be empty
    std::string product;  // the device's own name
    std::optional<HidPosLayout> layout;  // none: not a scanner this driver reads

    uint32_t portNumber() const;
    std::string devicePath() const;
    std::string sysfsPath() const { return "/sys/class/hidraw/hidraw" + std::to_string(number); }
    // The same physical device, whatever node number it has now.
    bool sameDevice(const HidrawNode& other) const
    {
        return vendorId == other.vendorId && productId == other.productId && serial == other.serial;
    }

    // None when sysfs has no such node.
    static std::optional<HidrawNode> read(unsigned number);
    // The node a port number names; none for a port of another family.
    static std::optional<HidrawNode> ofPort(uint32_t port);
    // Every hidraw node present, by number.
    static std::vector<HidrawNode> list();
};
