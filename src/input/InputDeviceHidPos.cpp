#include "input/InputDeviceHidPos.h"

#include <fcntl.h>
#include <libudev.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "util/SymbolCodecs.h"

namespace {

// A scanner plugged back in is looked for at most this often, so a device
// that appears but cannot be opened yet (udev still setting its permissions)
// costs two attempts a second, not a spin.
constexpr auto kReopenInterval = std::chrono::milliseconds(500);

bool nodeStillPresent(const HidrawNode& node)
{
    struct stat st;
    return stat(node.sysfsPath().c_str(), &st) == 0;
}

}  // namespace

InputDeviceHidPos::InputDeviceHidPos(DataCallback callback, const DeviceSettings& settings, ScanCallback onScan)
    : InputDevice(std::move(callback)), settings(settings), onScan(std::move(onScan))
{
}

InputDeviceHidPos::~InputDeviceHidPos()
{
    thread.stop();
    closeNode();
    if (monitor)
        udev_monitor_unref(monitor);
    if (udevContext)
        udev_unref(udevContext);
}

bool InputDeviceHidPos::start()
{
    const auto node = HidrawNode::ofPort(settings.port);
    if (!node || !node->layout || !openNode(*node))
        return false;
    watchUdev();
    if (!thread.start([this] { run(); })) {
        closeNode();
        return false;
    }
    return true;
}

// Unplugging is heard from udev; without it, only from the node itself.
void InputDeviceHidPos::watchUdev()
{
    udevContext = udev_new();
    if (!udevContext || !(monitor = udev_monitor_new_from_netlink(udevContext, "udev")))
        return;
    if (udev_monitor_filter_add_match_subsystem_devtype(monitor, "hidraw", nullptr) < 0 ||
        udev_monitor_enable_receiving(monitor) < 0) {
        udev_monitor_unref(monitor);
        monitor = nullptr;
    }
}

bool InputDeviceHidPos::openNode(const HidrawNode& node)
{
    // Reading needs no ioctl and no exclusive claim: hidraw gives every
    // reader its own copy of each report.
    const int opened = open(node.devicePath().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (opened < 0)
        return false;
    fd = opened;
    device = node;
    assembler.emplace(*node.layout);
    report.assign(node.layout->reportSize, '\0');
    return true;
}

void InputDeviceHidPos::closeNode()
{
    if (fd >= 0)
        close(fd);
    fd = -1;
    if (assembler)
        assembler->reset();
}

void InputDeviceHidPos::run()
{
    enum { MonitorSlot, NodeSlot, SlotCount };
    for (;;) {
        std::array<pollfd, SlotCount> fds{};
        fds[MonitorSlot] = {monitor ? udev_monitor_get_fd(monitor) : -1, POLLIN, 0};
        fds[NodeSlot] = {fd, POLLIN, 0};
        // Only a scanner that went away with a retry due needs a time-out; a
        // present one, or an absent one udev has not announced, is waited for
        // without any.
        int timeoutMs = -1;
        if (retryPending()) {
            const auto due = lastAttempt + kReopenInterval - std::chrono::steady_clock::now();
            timeoutMs = std::max<int>(0, std::chrono::duration_cast<std::chrono::milliseconds>(due).count() + 1);
        }
        if (!thread.wait(fds, timeoutMs))
            return;
        if (fds[MonitorSlot].revents & POLLIN)
            watchEvents();
        if (fd >= 0 && fds[NodeSlot].revents)
            readReport();
        if (retryPending() && std::chrono::steady_clock::now() >= lastAttempt + kReopenInterval)
            tryReopen();
    }
}

void InputDeviceHidPos::readReport()
{
    const ssize_t n = read(fd, report.data(), report.size());
    if (n < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    if (n <= 0) {
        // The device went away (ENODEV, EIO, end of file).
        closeNode();
        reopenWanted = true;
        return;
    }
    auto code = assembler->feed(report.substr(0, static_cast<size_t>(n)));
    if (!code)
        return;
    const std::string text = raw2Base64(code->data);
    const std::wstring base64(text.begin(), text.end());
    if (!onScan) {
        deliver(base64);
        return;
    }
    try {
        onScan(base64, code->symbology);
    } catch (...) {
        // Nothing may leave the reader's thread.
    }
}

// Drains udev's news of hidraw nodes. Removal of ours closes it; any node
// appearing while ours is gone may be ours back.
void InputDeviceHidPos::watchEvents()
{
    while (udev_device* event = udev_monitor_receive_device(monitor)) {
        const char* action = udev_device_get_action(event);
        const char* node = udev_device_get_devnode(event);
        if (fd >= 0 && action && std::strcmp(action, "remove") == 0 && node && device.devicePath() == node)
            closeNode();
        udev_device_unref(event);
    }
    if (fd >= 0 && !nodeStillPresent(device))
        closeNode();
    if (fd < 0)
        reopenWanted = true;
}

void InputDeviceHidPos::tryReopen()
{
    lastAttempt = std::chrono::steady_clock::now();
    reopenWanted = false;
    for (const HidrawNode& node : HidrawNode::list()) {
        if (!node.layout || !node.sameDevice(device))
            continue;
        if (!openNode(node))
            reopenWanted = true;  // present but not openable yet: try again later
        return;
    }
}
