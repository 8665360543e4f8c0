#include "input/EvdevKeyboards.h"

#include <fcntl.h>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "input/DeviceNodes.h"
#include "input/UdevApi.h"

namespace {

constexpr char kUsbBus[] = "0003";  // BUS_USB as the input device's id/bustype shows it

long nodeNumber(const std::string& node)
{
    const size_t digits = node.find_last_not_of("0123456789") + 1;
    return digits < node.size() ? std::strtol(node.c_str() + digits, nullptr, 10) : -1;
}

std::string attribute(const UdevApi& api, udev_device* device, const char* name)
{
    const char* value = device ? api.udev_device_get_sysattr_value(device, name) : nullptr;
    return value ? value : "";
}

std::string lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

EvdevKeyboard describe(const UdevApi& api, udev_device* node)
{
    // The name and ids belong to the input device above the event node.
    udev_device* input = api.udev_device_get_parent_with_subsystem_devtype(node, "input", nullptr);
    EvdevKeyboard keyboard;
    keyboard.node = api.udev_device_get_devnode(node);
    keyboard.name = normalisedDeviceName(attribute(api, input, "name"));
    if (attribute(api, input, "id/bustype") == kUsbBus)
        keyboard.ids = "usb:" + lower(attribute(api, input, "id/vendor")) + ":" +
                       lower(attribute(api, input, "id/product"));
    return keyboard;
}

}  // namespace

std::vector<EvdevKeyboard> listEvdevKeyboards()
{
    std::vector<EvdevKeyboard> keyboards;
    const UdevApi* api = UdevApi::get();
    udev* context = api ? api->udev_new() : nullptr;
    if (!context)
        return keyboards;
    if (udev_enumerate* scan = api->udev_enumerate_new(context)) {
        api->udev_enumerate_add_match_subsystem(scan, "input");
        api->udev_enumerate_add_match_property(scan, "ID_INPUT_KEYBOARD", "1");
        api->udev_enumerate_scan_devices(scan);
        for (udev_list_entry* e = api->udev_enumerate_get_list_entry(scan); e; e = api->udev_list_entry_get_next(e)) {
            udev_device* device = api->udev_device_new_from_syspath(context, api->udev_list_entry_get_name(e));
            const char* node = device ? api->udev_device_get_devnode(device) : nullptr;
            if (node && std::strncmp(node, "/dev/input/event", 16) == 0)
                keyboards.push_back(describe(*api, device));
            if (device)
                api->udev_device_unref(device);
        }
        api->udev_enumerate_unref(scan);
    }
    api->udev_unref(context);
    std::sort(keyboards.begin(), keyboards.end(), [](const EvdevKeyboard& a, const EvdevKeyboard& b) {
        return nodeNumber(a.node) < nodeNumber(b.node);
    });
    return keyboards;
}

bool namesKeyboard(const std::string& wanted, const EvdevKeyboard& keyboard)
{
    if (!wanted.empty() && normalisedDeviceName(wanted) == keyboard.name)
        return true;
    return !keyboard.ids.empty() && lower(wanted) == keyboard.ids;
}

int openKeyboardNode(const std::string& node, bool grab)
{
    const int fd = open(node.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0 || !grab || ioctl(fd, EVIOCGRAB, 1) == 0)
        return fd;
    const int cause = errno;
    close(fd);
    errno = cause;
    return -1;
}

std::string whyNotOpenable(const EvdevKeyboard& keyboard)
{
    const int fd = openKeyboardNode(keyboard.node, true);
    if (fd >= 0) {
        close(fd);  // closing ends the grab
        return "";
    }
    if (errno == EACCES || errno == EPERM)
        return "no permission (see ravlin-host udev-rule)";
    if (errno == EBUSY)
        return "held by another program";
    return std::strerror(errno);
}
