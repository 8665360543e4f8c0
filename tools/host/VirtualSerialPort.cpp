#include "VirtualSerialPort.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>

#include "HangTimeout.h"
#include "PrivateDev.h"

VirtualSerialPort::VirtualSerialPort(std::string name) : deviceName(std::move(name))
{
    plug();
}

VirtualSerialPort::~VirtualSerialPort()
{
    unplug();
    unlinkDevice(deviceName);
}

void VirtualSerialPort::plug()
{
    unplug();
    master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0)
        throw std::runtime_error("cannot make a pseudo-terminal");
    char path[128];
    if (ptsname_r(master, path, sizeof path) != 0)
        throw std::runtime_error("ptsname failed");
    slave = path;
    watch = open(path, O_RDONLY | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    if (watch < 0)
        throw std::runtime_error("cannot open the pseudo-terminal's slave");
    linkDevice(deviceName, slave);
}

void VirtualSerialPort::unplug()
{
    if (master >= 0)
        close(master);
    if (watch >= 0)
        close(watch);
    master = watch = -1;
}

void VirtualSerialPort::write(const std::string& bytes)
{
    size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(master, bytes.data() + done, bytes.size() - done);
        if (n > 0) {
            done += static_cast<size_t>(n);
        } else if (n < 0 && (errno == EAGAIN || errno == EINTR)) {
            pollfd p{master, POLLOUT, 0};
            poll(&p, 1, 100);
        } else {
            throw std::runtime_error("write to pseudo-terminal failed");
        }
    }
}

size_t VirtualSerialPort::writeSome(const std::string& bytes, int milliseconds)
{
    pollfd p{master, POLLOUT, 0};
    if (poll(&p, 1, milliseconds) <= 0)
        return 0;
    const ssize_t n = ::write(master, bytes.data(), bytes.size());
    return n > 0 ? static_cast<size_t>(n) : 0;
}

bool VirtualSerialPort::waitUntilTaken()
{
    return waitUntil([this] {
        int unread = 0;
        return ioctl(watch, TIOCINQ, &unread) == 0 && unread == 0;
    });
}
