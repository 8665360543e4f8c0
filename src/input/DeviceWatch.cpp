#include "input/DeviceWatch.h"

#include "input/UdevApi.h"

DeviceWatch::DeviceWatch(const char* subsystem)
{
    const UdevApi* api = UdevApi::get();
    if (!api || !(context = api->udev_new()))
        return;
    monitor = api->udev_monitor_new_from_netlink(context, "udev");
    if (monitor && (api->udev_monitor_filter_add_match_subsystem_devtype(monitor, subsystem, nullptr) < 0 ||
                    api->udev_monitor_enable_receiving(monitor) < 0)) {
        api->udev_monitor_unref(monitor);
        monitor = nullptr;
    }
}

DeviceWatch::~DeviceWatch()
{
    const UdevApi* api = UdevApi::get();
    if (monitor)
        api->udev_monitor_unref(monitor);
    if (context)
        api->udev_unref(context);
}

int DeviceWatch::fd() const
{
    return monitor ? UdevApi::get()->udev_monitor_get_fd(monitor) : -1;
}

bool DeviceWatch::changed()
{
    if (!monitor)
        return false;
    const UdevApi* api = UdevApi::get();
    // The monitor's socket is non-blocking: this ends when nothing is left.
    bool nodes = false;
    while (udev_device* device = api->udev_monitor_receive_device(monitor)) {
        // Parents without a node (the USB device, the input device) come too.
        nodes = nodes || api->udev_device_get_devnode(device) != nullptr;
        api->udev_device_unref(device);
    }
    return nodes;
}
