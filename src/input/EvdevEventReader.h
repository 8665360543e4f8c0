#pragma once
// Whole input events from an event node. A read may end inside an event (an
// emulated node is a pseudo-terminal underneath); its first bytes wait here
// for the rest.
#include <linux/input.h>
#include <sys/types.h>

class EvdevEventReader {
public:
    static constexpr size_t kBatch = 64;

    // Reads what waits on the node into `events`: the number of whole events,
    // or -1 with errno set (EAGAIN when nothing waits); 0 bytes read (end of
    // file) is reported as -1 with errno ENODEV.
    ssize_t read(int fd, input_event (&events)[kBatch]);
    // A new node: nothing carried over.
    void reset() { partialBytes = 0; }

private:
    char partial[sizeof(input_event)] = {};
    size_t partialBytes = 0;
};
