#include "input/InputDeviceComPort.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "input/LineSpeeds.h"
#include "input/PortFamily.h"
#include "input/SerialFramer.h"
#include "util/SupportLog.h"
#include "util/CharsetConversion.h"
#include "util/SymbolCodecs.h"

namespace {

constexpr int kReopenIntervalMs = 500;
constexpr int kMaxQuietWindowMs = 1000;
constexpr int kMaxEmptyReads = 100;
// A character on the line is at most 10 bits (start, 8 data, stop), so three
// of them take 30 bit times: 30000 ms-bits divided by the baud rate.
constexpr unsigned kThreeCharsBitMs = 30000;

// Input, output and local processing go, so the scanner's bytes arrive as sent:
// a canonical line turns CR into LF and holds bytes back until end of line, and
// the suffix would never arrive. The character size, parity and stop bits stay
// as the administrator set the line up (cfmakeraw would force 8N1).
bool configureLine(int fd, uint32_t speed)
{
    termios tio{};
    if (tcgetattr(fd, &tio) != 0)
        return false;  // not a terminal: no scanner can be behind it
    tio.c_iflag &= ~(IGNBRK | BRKINT | PARMRK | INLCR | IGNCR | ICRNL | IXON);
    tio.c_oflag &= ~OPOST;
    tio.c_lflag &= ~(ECHO | ECHONL | ICANON | ISIG | IEXTEN);
    tio.c_cflag |= CLOCAL | CREAD;
    tio.c_cc[VMIN] = 0;
    tio.c_cc[VTIME] = 0;
    const speed_t constant = lineSpeedFor(speed).constant;
    cfsetispeed(&tio, constant);
    cfsetospeed(&tio, constant);
    tcsetattr(fd, TCSAFLUSH, &tio);
    tcflush(fd, TCIOFLUSH);
    return true;
}

}  // namespace

InputDeviceComPort::InputDeviceComPort(DataCallback callback, const DeviceSettings& settings)
    : InputDevice(std::move(callback)), settings(settings), devicePath(portDevicePath(settings.port))
{
}

InputDeviceComPort::~InputDeviceComPort()
{
    thread.stop();
    closeLine();
}

bool InputDeviceComPort::start()
{
    if (!openLine())
        return false;
    if (!thread.start([this] { run(); })) {
        closeLine();
        return false;
    }
    return true;
}

// One reader to a line: a second one would take bytes out of the middle of
// the first one's codes. The lock keeps out every reader that takes it, root's
// too (another component, another host, the test window); exclusive mode keeps
// out every other open but root's, lock or no lock (the kernel refuses it).
bool InputDeviceComPort::openLine()
{
    fd = open(devicePath.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    lineBusy = fd < 0 && errno == EBUSY;
    if (fd < 0)
        return false;
    if (flock(fd, LOCK_EX | LOCK_NB) != 0) {
        lineBusy = true;
        SupportLog::write("serial line " + devicePath + " not opened: another reader holds it");
        closeLine();
        return false;
    }
    if (!configureLine(fd, settings.speed)) {
        closeLine();
        return false;
    }
    ioctl(fd, TIOCEXCL);
    SupportLog::write("serial line opened: " + devicePath);
    return true;
}

void InputDeviceComPort::closeLine()
{
    if (fd < 0)
        return;
    // The terminal keeps the mode while anyone else still has it open.
    ioctl(fd, TIOCNXCL);
    close(fd);  // and the lock goes with the descriptor
    fd = -1;
}

// A line that paused for less than this is still sending the same code: UARTs
// and USB adapters hand over a long code in pieces, milliseconds apart.
int InputDeviceComPort::quietWindowMs() const
{
    if (settings.comTimeout <= 0)
        return 0;
    const unsigned baud = lineSpeedFor(settings.speed).baud;
    const unsigned threeCharsMs = (kThreeCharsBitMs + baud - 1) / baud;
    return std::min(kMaxQuietWindowMs, std::max<int>(settings.comTimeout, static_cast<int>(threeCharsMs)));
}

void InputDeviceComPort::deliverCode(const std::string& code) const
{
    deliver(ConvertMbsToWcs(raw2Base64(code), settings.comEncoding));
}

void InputDeviceComPort::run()
{
    SerialFramer framer(settings.suffix);
    const int quietMs = quietWindowMs();
    int emptyReads = 0;
    while (fd < 0 ? reopenAfterPause() : readOnce(framer, quietMs, emptyReads)) {
    }
}

// Unplugged: the same path is tried again a couple of times a second.
bool InputDeviceComPort::reopenAfterPause()
{
    std::array<pollfd, 0> nothing{};
    if (!thread.wait(nothing, kReopenIntervalMs))
        return false;
    openLine();
    return true;
}

bool InputDeviceComPort::readOnce(SerialFramer& framer, int quietMs, int& emptyReads)
{
    std::array<pollfd, 1> line{{{fd, POLLIN, 0}}};
    if (!thread.wait(line, framer.pending() ? quietMs : -1))
        return false;
    const short events = line[0].revents;
    if (events == 0) {  // the line went quiet
        if (auto code = framer.quiet())
            deliverCode(*code);
        return true;
    }
    char chunk[4096];
    ssize_t n = -1;
    if (events & POLLIN)
        n = read(fd, chunk, sizeof chunk);
    if (n > 0) {
        emptyReads = 0;
        for (ssize_t i = 0; i < n; ++i)
            if (auto code = framer.feed(chunk[i]))
                deliverCode(*code);
        return true;
    }
    // A raw line with VMIN 0 answers an empty read with 0, not with EAGAIN, so
    // 0 alone is no end of file; a hang-up, an error, or a line that keeps
    // offering nothing is.
    const bool empty = (events & POLLIN) && (n == 0 || errno == EAGAIN || errno == EINTR);
    if (empty && !(events & (POLLHUP | POLLERR | POLLNVAL)) && ++emptyReads < kMaxEmptyReads)
        return true;
    emptyReads = 0;
    // The device went away.
    if (auto code = framer.quiet())
        deliverCode(*code);
    SupportLog::write("serial line lost: " + devicePath + "; tried again twice a second");
    closeLine();
    return true;
}
