#pragma once
// The libudev functions device enumeration and hot-plug watching need,
// resolved at run time: the add-in itself depends on the C library only, and a
// machine without libudev simply has no udev-listed devices.
#include "util/RuntimeLibrary.h"

struct udev;
struct udev_device;
struct udev_enumerate;
struct udev_list_entry;
struct udev_monitor;

#define RAVLIN_UDEV_FUNCTIONS(X)                                                                  \
    X(udev*, udev_new, (void))                                                                    \
    X(udev*, udev_unref, (udev*))                                                                 \
    X(udev_enumerate*, udev_enumerate_new, (udev*))                                               \
    X(udev_enumerate*, udev_enumerate_unref, (udev_enumerate*))                                   \
    X(int, udev_enumerate_add_match_subsystem, (udev_enumerate*, const char*))                    \
    X(int, udev_enumerate_add_match_property, (udev_enumerate*, const char*, const char*))        \
    X(int, udev_enumerate_scan_devices, (udev_enumerate*))                                        \
    X(udev_list_entry*, udev_enumerate_get_list_entry, (udev_enumerate*))                         \
    X(udev_list_entry*, udev_list_entry_get_next, (udev_list_entry*))                             \
    X(const char*, udev_list_entry_get_name, (udev_list_entry*))                                  \
    X(udev_device*, udev_device_new_from_syspath, (udev*, const char*))                           \
    X(udev_device*, udev_device_unref, (udev_device*))                                            \
    X(udev_device*, udev_device_get_parent_with_subsystem_devtype,                                \
      (udev_device*, const char*, const char*))                                                   \
    X(const char*, udev_device_get_devnode, (udev_device*))                                       \
    X(const char*, udev_device_get_property_value, (udev_device*, const char*))                   \
    X(const char*, udev_device_get_sysattr_value, (udev_device*, const char*))                    \
    X(udev_monitor*, udev_monitor_new_from_netlink, (udev*, const char*))                         \
    X(udev_monitor*, udev_monitor_unref, (udev_monitor*))                                         \
    X(int, udev_monitor_filter_add_match_subsystem_devtype, (udev_monitor*, const char*, const char*)) \
    X(int, udev_monitor_enable_receiving, (udev_monitor*))                                        \
    X(int, udev_monitor_get_fd, (udev_monitor*))                                                  \
    X(udev_device*, udev_monitor_receive_device, (udev_monitor*))

struct UdevApi {
    RAVLIN_FUNCTION_TABLE(RAVLIN_UDEV_FUNCTIONS)

    // The loaded library, or null when it or one of its functions is missing.
    // Loaded once; closed when the add-in is unloaded.
    static const UdevApi* get();
};
