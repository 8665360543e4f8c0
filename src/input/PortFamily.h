#pragma once
// The one home of the port numbering: a port number names a node family and
// an index, port = base + index, so "Port" 129 is /dev/ttyUSB0 and 193 is
// /dev/hidraw0.
#include <cstdint>
#include <optional>
#include <string>

struct PortFamily {
    const char* node;          // node name before the index, under /dev
    uint32_t base;             // port number of index 0
    const wchar_t* caption;    // settings form: caption + (index + 1), "USB COM1"
    const wchar_t* shortName;  // test window: short name + (index + shortFrom), "USB1"
    uint32_t shortFrom;        // 1 for the serial lines; 0 for hidraw, named by its node as the form names it
    bool hidPos;               // a USB HID point-of-sale scanner, not a serial line
};

// In ascending order of base.
extern const PortFamily kPortFamilies[4];
// /dev/hidrawN: offered and opened only when its device is a scanner.
extern const PortFamily& kHidPosFamily;

// The family a port number belongs to; null for 0 (keyboard mode).
const PortFamily* portFamilyOf(uint32_t port);
std::string portDevicePath(uint32_t port);
// "/dev/ttyUSB2" -> 131; nothing for a path that is not /dev/<node><digits>.
std::optional<uint32_t> portNumberOfNode(const PortFamily& family, const std::string& path);
// "COM1", "ACM2", "USB1", "hidraw2": how the test window names a port.
std::wstring portShortName(uint32_t port);
