#include "util/WakeDescriptor.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

WakeDescriptor::WakeDescriptor() : descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

WakeDescriptor::~WakeDescriptor()
{
    if (descriptor >= 0)
        close(descriptor);
}

void WakeDescriptor::wake()
{
    const uint64_t one = 1;
    while (write(descriptor, &one, sizeof one) < 0 && errno == EINTR) {
    }
}

void WakeDescriptor::clear()
{
    uint64_t count;
    while (read(descriptor, &count, sizeof count) < 0 && errno == EINTR) {
    }
}
