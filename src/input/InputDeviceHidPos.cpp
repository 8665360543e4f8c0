#include "input/InputDeviceHidPos.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "util/SupportLog.h"
#include "util/SymbolCodecs.h"

namespace {

// A scanner plugged back in is looked for at most this often, so a device
// that appears but cannot be opened yet (udev still setting its permissions)
// costs two attempts a second, not a spin.
constexpr auto kReopenInterval = std::chrono::milliseconds(500);
// The kernel announces a removal before it takes the device out of sysfs.
constexpr auto kSecondLookDelay = std::chrono::milliseconds(100);

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
}

bool InputDeviceHidPos::start()
{
    const auto node = HidrawNode::ofPort(settings.port);
    if (!node || !node->layout || !openNode(*node))
        return false;
    if (!thread.start([this] { run(); })) {
        closeNode();
        return false;
    }
    return true;
}

bool InputDeviceHidPos::openNode(const HidrawNode& node)
{
    // Reading needs no ioctl and no exclusive claim: hidraw gives every
    // reader its own copy of each report.
    const int opened = open(node.devicePath().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (opened < 0) {
        SupportLog::write("HID POS node " + node.devicePath() + " not opened: " + std::strerror(errno));
        return false;
    }
    SupportLog::write("HID POS node opened: " + node.devicePath());
    fd = opened;
    device = node;
    assembler.emplace(*node.layout);
    report.assign(node.layout->reportSize, '\0');
    return true;
}

void InputDeviceHidPos::closeNode()
{
    if (fd >= 0) {
        close(fd);
        SupportLog::write("HID POS node let go: " + device.devicePath());
    }
    fd = -1;
    if (assembler)
        assembler->reset();
}

void InputDeviceHidPos::run()
{
    enum { WatchSlot, NodeSlot, SlotCount };
    for (;;) {
        std::array<pollfd, SlotCount> fds{};
        fds[WatchSlot] = {watch.fd(), POLLIN, 0};
        fds[NodeSlot] = {fd, POLLIN, 0};
        // Only a retry or a second look that is due needs a time-out; a
        // scanner being read, or one gone that udev has not announced back,
        // is waited for without any.
        int timeoutMs = -1;
        if (const auto deadline = nextDeadline()) {
            const auto due = *deadline - Clock::now();
            timeoutMs = std::max<int>(0, std::chrono::duration_cast<std::chrono::milliseconds>(due).count() + 1);
        }
        if (!thread.wait(fds, timeoutMs))
            return;
        if ((fds[WatchSlot].revents & POLLIN) && watch.changed())
            nodesChanged();
        if (fd >= 0 && (fds[NodeSlot].revents & (POLLERR | POLLHUP | POLLNVAL)))
            lost();  // unplugged: a kernel node says so at once
        else if (fd >= 0 && (fds[NodeSlot].revents & POLLIN))
            readReport();
        const auto now = Clock::now();
        if (secondLook && now >= *secondLook) {
            secondLook.reset();
            if (fd >= 0 && !nodeStillPresent(device))
                lost();
        }
        if (retryPending() && now >= lastAttempt + kReopenInterval)
            tryReopen();
    }
}

void InputDeviceHidPos::readReport()
{
    const ssize_t n = read(fd, report.data(), report.size());
    if (n < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    if (n <= 0) {
        lost();  // ENODEV, EIO, end of file
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

// A hidraw node came or went: ours may be gone (an open node of a scanner
// pulled out need not report it), or back under another number.
void InputDeviceHidPos::nodesChanged()
{
    if (fd < 0)
        reopenWanted = true;
    else if (!nodeStillPresent(device))
        lost();
    else
        secondLook = Clock::now() + kSecondLookDelay;  // udev may speak before sysfs is updated
}

void InputDeviceHidPos::lost()
{
    closeNode();
    reopenWanted = true;
}

std::optional<InputDeviceHidPos::Clock::time_point> InputDeviceHidPos::nextDeadline() const
{
    if (retryPending())
        return lastAttempt + kReopenInterval;
    return secondLook;
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
