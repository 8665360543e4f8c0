#pragma once
// Turns a keyboard-mode scanner's key events into codes, the same on every
// path: the kernel reader passes its events as read, the X Input reader its
// key presses and releases as kernel events (X key code - 8 is the kernel's
// key code on every evdev or libinput X server). Keys are read as a US
// keyboard with the scanner's own Shift, Control, Alt and Caps Lock; the
// keypad as with Num Lock on; Alt held with keypad digits types one character
// by its code, as Windows does; codes are framed by KeyFramer.
#include <linux/input.h>

#include <optional>
#include <string>

#include "input/KeyFramer.h"

class KeyDecoder {
public:
    explicit KeyDecoder(const DeviceSettings& settings);

    // One event; returns the Base64 text of a code it completes. After
    // SYN_DROPPED events are ignored up to the next SYN_REPORT, and the code
    // in progress is thrown away up to its end: a scan with a hole is worse
    // than none.
    std::optional<std::wstring> feed(const input_event& event);
    // True between SYN_DROPPED and the report that ends the loss: the caller
    // then asks the device which keys are down and which locks are lit and
    // passes that to resync().
    bool dropping() const { return lost; }
    // Keys held (a KEY_CNT-bit map) and LEDs lit (an LED_CNT-bit map) as the
    // device reports them; null when it cannot tell: nothing held, no lock.
    void resync(const unsigned char* keysDown, const unsigned char* ledsLit);

    // Milliseconds of quiet after which pause() should be called (no suffix
    // and a code under way), or -1 when no pause is awaited.
    int pauseTimeout() const;
    // The pause came: with no suffix it ends the code.
    std::optional<std::wstring> pause();

private:
    std::optional<std::wstring> press(unsigned long keysym);
    std::optional<std::wstring> altCodeTyped();
    std::optional<std::wstring> ended(std::optional<std::wstring> text);
    bool shift() const { return leftShift || rightShift; }
    bool alt() const { return leftAlt || rightAlt; }

    KeyFramer framer;
    const int timeout;
    bool leftShift = false, rightShift = false, leftControl = false, rightControl = false;
    bool leftAlt = false, rightAlt = false;
    bool capsLock = false;
    bool lost = false;
    // An Alt+keypad code under way (a digit typed while Alt is held): the value so
    // far (mod 256, as Windows keeps it) and whether the first digit was 0.
    bool altPending = false;
    unsigned altValue = 0;
    bool altLeadingZero = false;
};
