#pragma once
// Tells a reader thread that device nodes of one kind came or went, so that a
// source waiting for its unplugged device sleeps until something changes
// instead of looking again and again. The events come from udev, after it
// has finished with a device (properties known, permissions set).
//
// One thread uses a watch: it polls fd() beside its own descriptors and calls
// changed() when it is readable.
class DeviceWatch {
public:
    // subsystem: the udev subsystem of the nodes, "input" or "hidraw".
    explicit DeviceWatch(const char* subsystem);
    ~DeviceWatch();
    DeviceWatch(const DeviceWatch&) = delete;
    DeviceWatch& operator=(const DeviceWatch&) = delete;

    // Readable while news is waiting; negative when udev cannot be had, in
    // which case nothing is ever reported.
    int fd() const;
    // Takes every waiting event; true when a device node appeared or went.
    bool changed();

private:
    struct udev* context = nullptr;
    struct udev_monitor* monitor = nullptr;
};
