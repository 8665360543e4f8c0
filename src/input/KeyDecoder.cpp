#include "input/KeyDecoder.h"

#include <algorithm>

#include "input/DeviceSettings.h"
#include "input/UsKeyboard.h"
#include "util/CharsetConversion.h"

namespace {

int keypadDigit(unsigned code)
{
    switch (code) {
    case KEY_KP0: return 0;
    case KEY_KP1: return 1;
    case KEY_KP2: return 2;
    case KEY_KP3: return 3;
    case KEY_KP4: return 4;
    case KEY_KP5: return 5;
    case KEY_KP6: return 6;
    case KEY_KP7: return 7;
    case KEY_KP8: return 8;
    case KEY_KP9: return 9;
    default: return -1;
    }
}

bool bitSet(const unsigned char* bits, unsigned n)
{
    return bits && (bits[n / 8] >> (n % 8)) & 1;
}

}  // namespace

KeyDecoder::KeyDecoder(const DeviceSettings& settings)
    : framer(settings), timeout(std::max(0, settings.keyboardTimeout))
{
}

std::optional<std::wstring> KeyDecoder::feed(const input_event& event)
{
    if (event.type == EV_SYN && event.code == SYN_DROPPED) {
        framer.discard();
        altPending = false;
        lost = true;
        return std::nullopt;
    }
    if (lost) {
        lost = !(event.type == EV_SYN && event.code == SYN_REPORT);
        return std::nullopt;
    }
    // Auto-repeat (2) types nothing more.
    if (event.type != EV_KEY || event.value == 2)
        return std::nullopt;
    const bool down = event.value == 1;
    // Modifier keys read the same at both levels, so Shift's own change below
    // leaves this keysym as it is.
    const unsigned long keysym = UsKeyboard::keysym(event.code, shift());
    // The configured GS key types GS and nothing else: as Caps Lock it locks
    // nothing, as Right Alt it starts no Alt code.
    if (framer.isGsKey(keysym))
        return down ? press(keysym) : std::nullopt;
    const bool wasAlt = alt();
    switch (event.code) {
    case KEY_LEFTSHIFT: leftShift = down; break;
    case KEY_RIGHTSHIFT: rightShift = down; break;
    case KEY_LEFTCTRL: leftControl = down; break;
    case KEY_RIGHTCTRL: rightControl = down; break;
    case KEY_LEFTALT: leftAlt = down; break;
    case KEY_RIGHTALT: rightAlt = down; break;
    case KEY_CAPSLOCK: capsLock = capsLock != down; break;
    default: break;
    }
    if (!wasAlt && alt())
        altPending = false;
    if (wasAlt && !alt())
        return altCodeTyped();
    if (!down)
        return std::nullopt;
    const int digit = keypadDigit(event.code);
    if (alt() && digit >= 0) {
        if (!altPending) {
            altValue = 0;
            altLeadingZero = digit == 0;
        }
        altValue = (altValue * 10 + static_cast<unsigned>(digit)) % 256;
        altPending = true;
        return std::nullopt;
    }
    return press(keysym);
}

std::optional<std::wstring> KeyDecoder::press(unsigned long keysym)
{
    // A key a US keyboard does not have types nothing.
    if (keysym == 0)
        return std::nullopt;
    const bool control = leftControl || rightControl;
    return ended(framer.press(keysym, control, UsKeyboard::typedByte(keysym, control, capsLock)));
}

// Alt released after keypad digits: Alt+0nnn is the Windows-1251 character
// nnn, Alt+nnn the CP866 one; control codes and ASCII are the same in both.
// Characters above ASCII arrive in UTF-8, as from a UTF-8 serial scanner.
std::optional<std::wstring> KeyDecoder::altCodeTyped()
{
    if (!altPending)
        return std::nullopt;
    altPending = false;
    const char byte = static_cast<char>(altValue);
    if (altValue < 0x80)
        return ended(framer.type(std::string(1, byte)));
    const std::string text = singleByteToUtf8(byte, altLeadingZero ? "CP1251" : "CP866");
    if (text.empty())
        return std::nullopt;  // a value the code page leaves undefined
    return ended(framer.type(text));
}

// A code that ends while Alt is held takes no unfinished Alt code along.
std::optional<std::wstring> KeyDecoder::ended(std::optional<std::wstring> text)
{
    if (text)
        altPending = false;
    return text;
}

void KeyDecoder::resync(const unsigned char* keysDown, const unsigned char* ledsLit)
{
    leftShift = bitSet(keysDown, KEY_LEFTSHIFT);
    rightShift = bitSet(keysDown, KEY_RIGHTSHIFT);
    leftControl = bitSet(keysDown, KEY_LEFTCTRL);
    rightControl = bitSet(keysDown, KEY_RIGHTCTRL);
    leftAlt = bitSet(keysDown, KEY_LEFTALT);
    rightAlt = bitSet(keysDown, KEY_RIGHTALT);
    capsLock = bitSet(ledsLit, LED_CAPSL);
    altPending = false;
}

int KeyDecoder::pauseTimeout() const
{
    return framer.waitsForPause() ? timeout : -1;
}

std::optional<std::wstring> KeyDecoder::pause()
{
    altPending = false;
    return framer.pause();
}
