#pragma once
// USB HID devices with their /dev/hidrawN nodes, emulated by umockdev: the
// sysfs tree (USB device, HID device with its report descriptor and uevent,
// hidraw node) and a node whose reads return what the test writes. The
// program must run under umockdev-wrapper.
#include <cstdint>
#include <map>
#include <string>

struct _UMockdevTestbed;

class HidrawTestbed {
public:
    HidrawTestbed();
    ~HidrawTestbed();
    HidrawTestbed(const HidrawTestbed&) = delete;
    HidrawTestbed& operator=(const HidrawTestbed&) = delete;

    static bool active();  // running under umockdev's preload

    struct Device {
        uint16_t vendorId;
        uint16_t productId;
        std::string serial;
        std::string product;
        std::string descriptor;
    };
    // Plugs the device in as /dev/hidraw<number>.
    void plug(unsigned number, const Device& device);
    // Pulls it out: udev hears of it, the sysfs tree and the node go.
    void unplug(unsigned number);
    // Bytes the device sends: reports, back to back.
    void send(unsigned number, const std::string& reports);
    // The node's file in the testbed, e.g. to take its permissions away.
    std::string nodeFile(unsigned number) const;
    // What the node is underneath (a pseudo-terminal), as /proc/self/fd shows it.
    std::string nodeTarget(unsigned number) const;

private:
    std::string usbPath(unsigned number) const;
    _UMockdevTestbed* testbed;
    std::map<unsigned, std::string> hidrawPaths;
};
