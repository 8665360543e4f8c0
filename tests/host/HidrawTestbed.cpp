#include "HidrawTestbed.h"

#include <umockdev.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace {

std::string hex(const std::string& bytes)
{
    std::string out;
    char two[3];
    for (unsigned char b : bytes) {
        std::snprintf(two, sizeof two, "%02X", b);
        out += two;
    }
    return out;
}

std::string hex4(unsigned v)
{
    char s[9];
    std::snprintf(s, sizeof s, "%04X", v);
    return s;
}

}  // namespace

HidrawTestbed::HidrawTestbed() : testbed(umockdev_testbed_new())
{
    if (!active())
        throw std::runtime_error("not under umockdev-wrapper: the hidraw testbed would be the real /sys");
}

HidrawTestbed::~HidrawTestbed() { g_object_unref(testbed); }

bool HidrawTestbed::active() { return umockdev_in_mock_environment(); }

std::string HidrawTestbed::usbPath(unsigned number) const
{
    return "/sys/devices/pci0000:00/0000:00:14.0/usb1/1-" + std::to_string(number + 1);
}

void HidrawTestbed::plug(unsigned number, const Device& d)
{
    const std::string usb = usbPath(number).substr(4);
    const std::string hid = usb + "/1-" + std::to_string(number + 1) + ":1.0/0003:" + hex4(d.vendorId) + ":" +
                            hex4(d.productId) + "." + hex4(number + 1);
    const std::string tree =
        "P: " + usb + "\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\nA: idVendor=" + hex4(d.vendorId) +
        "\nA: idProduct=" + hex4(d.productId) + "\nA: serial=" + d.serial + "\nA: product=" + d.product + "\n\n" +
        "P: " + hid + "\nE: SUBSYSTEM=hid\nE: HID_ID=0003:0000" + hex4(d.vendorId) + ":0000" + hex4(d.productId) +
        "\nE: HID_NAME=" + d.product + "\nE: HID_UNIQ=" + d.serial + "\nH: report_descriptor=" + hex(d.descriptor) +
        "\n\n" + "P: " + hid + "/hidraw/hidraw" + std::to_string(number) +
        "\nE: SUBSYSTEM=hidraw\nE: DEVNAME=/dev/hidraw" + std::to_string(number) + "\nN: hidraw" +
        std::to_string(number) + "\nA: dev=241:" + std::to_string(number) + "\nL: device=../../../" +
        hid.substr(hid.rfind('/') + 1) + "\n";
    hidrawPaths[number] = "/sys" + hid + "/hidraw/hidraw" + std::to_string(number);
    GError* error = nullptr;
    if (!umockdev_testbed_add_from_string(testbed, tree.c_str(), &error)) {
        const std::string why = error ? error->message : "?";
        g_clear_error(&error);
        throw std::runtime_error("umockdev: " + why);
    }
    // Announced again once whole, as udev does (umockdev announces it while making it).
    umockdev_testbed_uevent(testbed, hidrawPaths[number].c_str(), "add");
}

void HidrawTestbed::unplug(unsigned number)
{
    // udev tells of the removal (umockdev leaves that to the test), as the
    // kernel does just before the device leaves sysfs.
    umockdev_testbed_uevent(testbed, hidrawPaths.at(number).c_str(), "remove");
    umockdev_testbed_remove_device(testbed, usbPath(number).c_str());
    hidrawPaths.erase(number);
}

void HidrawTestbed::send(unsigned number, const std::string& reports)
{
    const int fd = umockdev_testbed_get_dev_fd(testbed, ("/dev/hidraw" + std::to_string(number)).c_str());
    if (fd < 0 || write(fd, reports.data(), reports.size()) != static_cast<ssize_t>(reports.size()))
        throw std::runtime_error("cannot write to the emulated hidraw" + std::to_string(number));
}

std::string HidrawTestbed::nodeFile(unsigned number) const
{
    gchar* root = umockdev_testbed_get_root_dir(testbed);
    const std::string path = std::string(root) + "/dev/hidraw" + std::to_string(number);
    g_free(root);
    return path;
}

std::string HidrawTestbed::nodeTarget(unsigned number) const
{
    char* resolved = realpath(nodeFile(number).c_str(), nullptr);
    const std::string target = resolved ? resolved : "";
    std::free(resolved);
    return target;
}
