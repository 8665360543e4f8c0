#include "UsbIdentity.h"

#include "input/UdevApi.h"
#include "util/TextUtil.h"

namespace {

std::string text(const char* value) { return value ? value : ""; }

// `device` is the USB device itself; `node` the device the question is about.
UsbIdentity describe(const UdevApi& api, udev_device* node, udev_device* device)
{
    UsbIdentity identity;
    if (device) {
        identity.vendor = str_tolower(text(api.udev_device_get_sysattr_value(device, "idVendor")));
        identity.product = str_tolower(text(api.udev_device_get_sysattr_value(device, "idProduct")));
        identity.maker = text(api.udev_device_get_sysattr_value(device, "manufacturer"));
        if (identity.maker.empty())
            identity.maker = text(api.udev_device_get_property_value(device, "ID_VENDOR_FROM_DATABASE"));
    }
    identity.driver = text(api.udev_device_get_property_value(node, "ID_USB_DRIVER"));
    identity.modemManagerIgnores = text(api.udev_device_get_property_value(node, "ID_MM_DEVICE_IGNORE")) == "1";
    return identity;
}

}  // namespace

UsbIdentity usbIdentityOf(const std::string& classPath)
{
    const UdevApi* api = UdevApi::get();
    udev* context = api ? api->udev_new() : nullptr;
    if (!context)
        return UsbIdentity();
    UsbIdentity identity;
    if (udev_device* node = api->udev_device_new_from_syspath(context, classPath.c_str())) {
        identity = describe(*api, node, api->udev_device_get_parent_with_subsystem_devtype(node, "usb", "usb_device"));
        api->udev_device_unref(node);
    }
    api->udev_unref(context);
    return identity;
}

std::vector<UsbIdentity> usbDevices()
{
    std::vector<UsbIdentity> devices;
    const UdevApi* api = UdevApi::get();
    udev* context = api ? api->udev_new() : nullptr;
    if (!context)
        return devices;
    if (udev_enumerate* scan = api->udev_enumerate_new(context)) {
        api->udev_enumerate_add_match_subsystem(scan, "usb");
        api->udev_enumerate_scan_devices(scan);
        for (udev_list_entry* e = api->udev_enumerate_get_list_entry(scan); e; e = api->udev_list_entry_get_next(e))
            if (udev_device* device = api->udev_device_new_from_syspath(context, api->udev_list_entry_get_name(e))) {
                if (api->udev_device_get_sysattr_value(device, "idVendor"))
                    devices.push_back(describe(*api, device, device));
                api->udev_device_unref(device);
            }
        api->udev_enumerate_unref(scan);
    }
    api->udev_unref(context);
    return devices;
}
