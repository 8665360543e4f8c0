#include "input/InputDeviceComPort.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "input/SerialFramer.h"
#include "util/CharsetConversion.h"
#include "util/SymbolCodecs.h"

namespace {

speed_t speedConstant(uint32_t speed)
{
    switch (speed) {
    case 110: return B110;
    case 300: return B300;
    case 600: return B600;
    case 1200: return B1200;
    case 2400: return B2400;
    case 4800: return B4800;
    case 19200: return B19200;
    case 38400: return B38400;
    case 57600: return B57600;
    case 115200: return B115200;
    default: return B9600;
    }
}

// Raw mode is essential: a terminal left canonical turns the scanner's CR into
// LF and holds bytes back until end of line, so the suffix would never arrive.
bool configureLine(int fd, uint32_t speed)
{
    termios tio{};
    if (tcgetattr(fd, &tio) != 0)
        return false;  // not a terminal: no scanner can be behind it
    cfmakeraw(&tio);
    tio.c_cflag |= CLOCAL | CREAD;
    tio.c_cc[VMIN] = 0;
    tio.c_cc[VTIME] = 0;
    cfsetispeed(&tio, speedConstant(speed));
    cfsetospeed(&tio, speedConstant(speed));
    tcsetattr(fd, TCSAFLUSH, &tio);
    tcflush(fd, TCIOFLUSH);
    return true;
}

constexpr int kReopenIntervalMs = 500;
constexpr int kMaxQuietWindowMs = 1000;
constexpr int kMaxEmptyReads = 100;

}  // namespace

InputDeviceComPort::InputDeviceComPort(DataCallback callback) : InputDevice(std::move(callback)) {}

InputDeviceComPort::~InputDeviceComPort()
{
    if (thread.joinable()) {
        running = false;
        wakeUp.wake();
        thread.join();
    }
    closeLine();
}

std::string InputDeviceComPort::devicePathFor(uint32_t portNumber)
{
    if (portNumber >= 129)
        return "/dev/ttyUSB" + std::to_string(portNumber - 129);
    if (portNumber >= 65)
        return "/dev/ttyACM" + std::to_string(portNumber - 65);
    return "/dev/ttyS" + std::to_string(portNumber - 1);
}

unsigned InputDeviceComPort::baudFor(uint32_t speed)
{
    return speedConstant(speed) == B9600 ? 9600 : speed;
}

bool InputDeviceComPort::start(const InputDeviceComPortFactory& from)
{
    settings.portNumber = from.portNumber;
    settings.speed = from.speed;
    settings.dataBits = from.dataBits;
    settings.stopBits = from.stopBits;
    settings.suffix = from.suffix;
    settings.comTimeout = from.comTimeout;
    settings.comEncoding = from.comEncoding;
    devicePath = devicePathFor(settings.portNumber);
    suffix = wstr2str(settings.suffix);

    if (wakeUp.fd() < 0 || !openLine())
        return false;
    running = true;
    try {
        thread = std::thread(&InputDeviceComPort::run, this);
    } catch (...) {
        running = false;
        closeLine();
        return false;
    }
    return true;
}

bool InputDeviceComPort::openLine()
{
    fd = open(devicePath.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0)
        return false;
    if (!configureLine(fd, settings.speed)) {
        closeLine();
        return false;
    }
    return true;
}

void InputDeviceComPort::closeLine()
{
    if (fd >= 0)
        close(fd);
    fd = -1;
}

// A line that paused for less than this is still sending the same code: UARTs
// and USB adapters hand over a long code in pieces, milliseconds apart.
int InputDeviceComPort::quietWindowMs() const
{
    if (settings.comTimeout <= 0)
        return 0;
    const unsigned threeCharsMs = (30000 + baudFor(settings.speed) - 1) / baudFor(settings.speed);
    return std::min(kMaxQuietWindowMs, std::max<int>(settings.comTimeout, static_cast<int>(threeCharsMs)));
}

bool InputDeviceComPort::waitForInput(int timeoutMs, short& lineEvents)
{
    pollfd fds[2] = {{wakeUp.fd(), POLLIN, 0}, {fd, POLLIN, 0}};
    int rc;
    do {
        rc = poll(fds, fd >= 0 ? 2 : 1, timeoutMs);
    } while (rc < 0 && errno == EINTR);
    lineEvents = fd >= 0 ? fds[1].revents : 0;
    return running && !(fds[0].revents & POLLIN);
}

void InputDeviceComPort::deliverCode(const std::string& code) const
{
    deliver(ConvertMbsToWcs(raw2Base64(code), settings.comEncoding));
}

void InputDeviceComPort::run()
{
    SerialFramer framer(suffix);
    char chunk[4096];
    int emptyReads = 0;
    const int quietMs = quietWindowMs();
    while (running) {
        if (fd < 0) {
            // Unplugged: try the same path again a couple of times a second.
            short ignored = 0;
            if (!waitForInput(kReopenIntervalMs, ignored))
                break;
            openLine();
            continue;
        }
        short events = 0;
        if (!waitForInput(framer.pending() ? quietMs : -1, events))
            break;
        if (events == 0) {
            if (auto code = framer.quiet())
                deliverCode(*code);
            continue;
        }
        ssize_t n = -1;
        if (events & POLLIN)
            n = read(fd, chunk, sizeof chunk);
        if (n > 0) {
            emptyReads = 0;
            for (ssize_t i = 0; i < n; ++i)
                if (auto code = framer.feed(chunk[i]))
                    deliverCode(*code);
            continue;
        }
        // A raw line with VMIN 0 answers an empty read with 0, not with
        // EAGAIN, so 0 alone is no end of file; a hang-up, an error, or a line
        // that keeps offering nothing is.
        const bool empty = (events & POLLIN) && (n == 0 || errno == EAGAIN || errno == EINTR);
        if (empty && !(events & (POLLHUP | POLLERR | POLLNVAL)) && ++emptyReads < kMaxEmptyReads)
            continue;
        emptyReads = 0;
        // The device went away.
        if (auto code = framer.quiet())
            deliverCode(*code);
        closeLine();
    }
}
