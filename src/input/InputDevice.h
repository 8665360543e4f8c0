#pragma once
// A running reader. It starts when its factory returns it and stops (thread
// joined, device released) when it is destroyed.
#include <functional>
#include <string>

#include "util/SupportLog.h"

// Receives each framed code as the Base64 text of its bytes, on the reader's thread.
using DataCallback = std::function<void(const std::wstring&)>;

class InputDevice {
public:
    explicit InputDevice(DataCallback callback) : callback(std::move(callback)) {}
    virtual ~InputDevice() {}
    InputDevice(const InputDevice&) = delete;
    InputDevice& operator=(const InputDevice&) = delete;

protected:
    // Hands one code to the consumer; nothing the consumer throws may leave the
    // reader's thread, which would end the host process.
    void deliver(const std::wstring& code) const noexcept
    {
        try {
            callback(code);
        } catch (...) {
        }
        // Only once the code is with the host: the log never holds it back.
        try {
            if (SupportLog::enabled())
                SupportLog::write("code delivered: " + SupportLog::describeCode(code));
        } catch (...) {
        }
    }

private:
    DataCallback callback;
};
