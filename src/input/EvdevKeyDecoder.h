#pragma once
// Turns the events of a kernel keyboard node into codes: tracks Shift,
// Control and Caps Lock, reads keys as a US keyboard and frames them exactly
// as the X Input path does.
#include <linux/input.h>

#include <optional>
#include <string>

#include "input/KeyFramer.h"

class EvdevKeyDecoder {
public:
    explicit EvdevKeyDecoder(const DeviceSettings& settings);

    // One event as read; returns the Base64 text of a code it completes.
    // After SYN_DROPPED the code in progress is thrown away and events are
    // ignored up to the next SYN_REPORT: a scan with a hole is worse than none.
    std::optional<std::wstring> feed(const input_event& event);
    // True between SYN_DROPPED and the report that ends the loss: the caller
    // then asks the device which keys are down and passes that to resync().
    bool dropping() const { return lost; }
    // Modifiers as the device reports them held (a KEY_CNT-bit map), or all
    // released when it cannot tell (null).
    void resync(const unsigned char* keysDown);

private:
    KeyFramer framer;
    bool leftShift = false, rightShift = false, leftControl = false, rightControl = false;
    bool capsLock = false;
    bool lost = false;
};
