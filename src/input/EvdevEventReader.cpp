#include "input/EvdevEventReader.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

ssize_t EvdevEventReader::read(int fd, input_event (&events)[kBatch])
{
    union {
        input_event events[kBatch];
        char bytes[sizeof events];
    } buffer;
    std::memcpy(buffer.bytes, partial, partialBytes);
    ssize_t n;
    while ((n = ::read(fd, buffer.bytes + partialBytes, sizeof buffer - partialBytes)) < 0 && errno == EINTR) {
    }
    if (n == 0)
        errno = ENODEV;
    if (n <= 0)
        return -1;
    const size_t total = partialBytes + static_cast<size_t>(n);
    const size_t count = total / sizeof(input_event);
    partialBytes = total % sizeof(input_event);
    std::memcpy(partial, buffer.bytes + count * sizeof(input_event), partialBytes);
    std::memcpy(events, buffer.events, count * sizeof(input_event));
    return static_cast<ssize_t>(count);
}
