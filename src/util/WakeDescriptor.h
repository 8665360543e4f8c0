#pragma once
// A descriptor a reader thread polls beside its device, so that stopping the
// thread wakes it at once instead of after a time-out.
class WakeDescriptor {
public:
    WakeDescriptor();
    ~WakeDescriptor();
    WakeDescriptor(const WakeDescriptor&) = delete;
    WakeDescriptor& operator=(const WakeDescriptor&) = delete;

    int fd() const { return descriptor; }  // negative when none could be made
    void wake();
    void clear();  // takes back a wake, for a descriptor used again

private:
    int descriptor;
};
