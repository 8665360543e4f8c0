#include "KeyboardScan.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>

#include "input/DeviceSettings.h"
#include "input/NonPrintableKeys.h"
#include "input/UsKeyboard.h"
#include "util/CharsetConversion.h"
#include "util/SymbolCodecs.h"

namespace {

constexpr int kScanPauseMs = 300;  // a scanner types a code faster than this

int keypadDigit(unsigned code)
{
    static const unsigned digits[] = {KEY_KP0, KEY_KP1, KEY_KP2, KEY_KP3, KEY_KP4,
                                      KEY_KP5, KEY_KP6, KEY_KP7, KEY_KP8, KEY_KP9};
    for (int d = 0; d < 10; ++d)
        if (digits[d] == code)
            return d;
    return -1;
}

// The GSSymbolKey choices a scanner may press for GS: F1 to F12 (F8 is read
// as GS anyway) and the editing keys.
int gsKeyChoice(unsigned long keysym)
{
    for (int id = NonPrintableKeys::F1; id <= NonPrintableKeys::PgDn; ++id)
        if (id != NonPrintableKeys::F8 &&
            NonPrintableKeys::getKeyLinuxData(static_cast<NonPrintableKeys::KeyID>(id)) == keysym)
            return id;
    return -1;
}

}  // namespace

DeviceSettings KeyboardScan::settings()
{
    DeviceSettings s;
    s.port = 0;
    s.suffix.clear();
    s.keyboardTimeout = kScanPauseMs;
    return s;
}

KeyboardScan::KeyboardScan(int fd, std::string kernelNodeRule) : node(fd), decoder(settings())
{
    scan.path = ScanEvidence::Path::Keyboard;
    scan.kernelNodeRule = std::move(kernelNodeRule);
    unsigned char leds[LED_CNT / 8 + 1] = {};
    capsLit = ioctl(fd, EVIOCGLED(sizeof leds), leds) >= 0 && (leds[LED_CAPSL / 8] >> (LED_CAPSL % 8)) & 1;
    scan.capsLock = capsLit;
}

KeyboardScan::~KeyboardScan() { close(node); }

std::vector<ScanEvidence> KeyboardScan::read()
{
    std::vector<ScanEvidence> scans;
    input_event batch[EvdevEventReader::kBatch];
    const ssize_t count = events.read(node, batch);
    if (count < 0 && errno != EAGAIN)
        lost = true;
    for (ssize_t i = 0; i < count; ++i) {
        watch(batch[i]);
        if (auto done = completed(decoder.feed(batch[i])))
            scans.push_back(*done);
    }
    return scans;
}

std::optional<ScanEvidence> KeyboardScan::pause() { return completed(decoder.pause()); }

void KeyboardScan::watch(const input_event& event)
{
    if (event.type != EV_KEY || event.value == 2)
        return;
    const bool down = event.value == 1;
    switch (event.code) {
    case KEY_LEFTCTRL:
    case KEY_RIGHTCTRL: control = down; return;
    case KEY_LEFTALT:
    case KEY_RIGHTALT:
        // Alt let go after keypad digits: a character typed by its code.
        if (!down && !altDigits.empty() && std::stoi(altDigits) % 256 == 29)
            scan.gsForm = "Alt+" + altDigits;
        altDigits.clear();
        alt = down;
        return;
    case KEY_LEFTSHIFT:
    case KEY_RIGHTSHIFT: return;
    default: break;
    }
    if (!down)
        return;
    const unsigned long keysym = UsKeyboard::keysym(event.code, false);
    if (alt && keypadDigit(event.code) >= 0 && altDigits.size() < 4)
        altDigits += static_cast<char>('0' + keypadDigit(event.code));
    else if (event.code == KEY_RIGHTBRACE && control)
        scan.gsForm = "Ctrl+]";
    else if (event.code == KEY_F8)
        scan.gsForm = "F8";
    else if (event.code == KEY_CAPSLOCK)
        scan.capsLock = true;
    else if (event.code == KEY_102ND)
        scan.foreignKeys.push_back("the key between left Shift and Z (102nd key)");
    else if (keysym == 0)
        scan.foreignKeys.push_back("key " + std::to_string(event.code));
    else if (const int id = gsKeyChoice(keysym); id >= 0) {
        scan.otherKeyId = id;
        scan.otherKeyName = wstr2str(NonPrintableKeys::getKeyFullName(static_cast<NonPrintableKeys::KeyID>(id)));
    }
}

std::optional<ScanEvidence> KeyboardScan::completed(const std::optional<std::wstring>& base64)
{
    if (!base64)
        return std::nullopt;
    ScanEvidence done = scan;
    done.bytes = base642Raw(wstr2str(*base64));
    scan = ScanEvidence();
    scan.path = ScanEvidence::Path::Keyboard;
    scan.kernelNodeRule = done.kernelNodeRule;
    scan.capsLock = capsLit;
    return done;
}
