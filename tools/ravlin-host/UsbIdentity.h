#pragma once
// What udev knows of the USB device behind a node: its ids, its maker, the
// kernel driver of its interface and whether ModemManager is told to leave it
// alone. Empty fields where udev does not tell (no libudev, not USB).
#include <string>
#include <vector>

struct UsbIdentity {
    std::string vendor, product;  // four lower-case hex digits each
    std::string maker;            // the device's manufacturer string, else udev's vendor database name
    std::string driver;           // ID_USB_DRIVER: cdc_acm, ch341, ftdi_sio, usbhid...
    bool modemManagerIgnores = false;  // ID_MM_DEVICE_IGNORE=1

    bool usb() const { return !vendor.empty(); }
    std::string ids() const { return usb() ? "usb:" + vendor + ":" + product : std::string(); }
};

// For a device by its sysfs class path, e.g. "/sys/class/tty/ttyACM0".
UsbIdentity usbIdentityOf(const std::string& classPath);

// Every USB device present (not its interfaces).
std::vector<UsbIdentity> usbDevices();
