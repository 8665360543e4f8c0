#include "input/EvdevKeyDecoder.h"

#include "input/UsKeyboard.h"

EvdevKeyDecoder::EvdevKeyDecoder(const DeviceSettings& settings) : framer(settings) {}

std::optional<std::wstring> EvdevKeyDecoder::feed(const input_event& event)
{
    if (event.type == EV_SYN && event.code == SYN_DROPPED) {
        framer.discard();
        lost = true;
        return std::nullopt;
    }
    if (lost) {
        lost = !(event.type == EV_SYN && event.code == SYN_REPORT);
        return std::nullopt;
    }
    // Releases only move modifiers; auto-repeat (2) types nothing.
    if (event.type != EV_KEY || event.value == 2)
        return std::nullopt;
    const bool down = event.value == 1;
    switch (event.code) {
    case KEY_LEFTSHIFT: leftShift = down; break;
    case KEY_RIGHTSHIFT: rightShift = down; break;
    case KEY_LEFTCTRL: leftControl = down; break;
    case KEY_RIGHTCTRL: rightControl = down; break;
    case KEY_CAPSLOCK: capsLock = capsLock != down; break;
    default: break;
    }
    if (!down)
        return std::nullopt;
    const unsigned long keysym = UsKeyboard::keysym(event.code, leftShift || rightShift);
    // A key a US keyboard does not have types nothing.
    if (keysym == 0)
        return std::nullopt;
    const bool control = leftControl || rightControl;
    return framer.press(keysym, control, UsKeyboard::typedByte(keysym, control, capsLock));
}

void EvdevKeyDecoder::resync(const unsigned char* keysDown)
{
    auto held = [keysDown](unsigned code) { return keysDown && (keysDown[code / 8] >> (code % 8)) & 1; };
    leftShift = held(KEY_LEFTSHIFT);
    rightShift = held(KEY_RIGHTSHIFT);
    leftControl = held(KEY_LEFTCTRL);
    rightControl = held(KEY_RIGHTCTRL);
}
