#include "ScanAdvice.h"

#include <cctype>
#include <cstdio>

#include "util/CharsetConversion.h"
#include "util/SymbolCodecs.h"

namespace {

constexpr char kGroupSeparator = 29;

std::string byteName(unsigned char byte)
{
    const std::string name = wstr2str(GetSymbolName(byte));
    if (!name.empty() && byte != ' ')
        return "<" + name + ">";
    char hex[8];
    std::snprintf(hex, sizeof hex, "<x%02X>", byte);
    return hex;
}

bool isControl(unsigned char byte) { return byte < 0x20 || byte == 0x7F; }

// The AIM identifier a scanner may put first: "]" then a letter and a digit.
size_t aimLength(const std::string& bytes)
{
    return bytes.size() >= 3 && bytes[0] == ']' && std::isalpha(static_cast<unsigned char>(bytes[1])) ? 3 : 0;
}

// A GS1 code with more than one field: the identifier of GS1 DataMatrix, GS1-128,
// GS1 QR or GS1 DataBar, or a GTIN (01 + 14 digits) with something after it.
bool looksGs1(const std::string& bytes, const std::string& symbology)
{
    for (const char* id : {"]d2", "]C1", "]Q3", "]e0"})
        if (symbology == id || bytes.compare(0, 3, id) == 0)
            return true;
    const std::string data = bytes.substr(aimLength(bytes));
    if (data.size() <= 16 || data.compare(0, 2, "01") != 0)
        return false;
    for (size_t i = 2; i < 16; ++i)
        if (!std::isdigit(static_cast<unsigned char>(data[i])))
            return false;
    return true;
}

bool validUtf8(const std::string& bytes)
{
    for (size_t i = 0; i < bytes.size();) {
        const auto b = static_cast<unsigned char>(bytes[i]);
        const size_t more = b < 0x80 ? 0 : (b & 0xE0) == 0xC0 ? 1 : (b & 0xF0) == 0xE0 ? 2 : (b & 0xF8) == 0xF0 ? 3 : 4;
        if (more == 4 || bytes.size() - i <= more)
            return false;
        for (size_t k = 1; k <= more; ++k)
            if ((static_cast<unsigned char>(bytes[i + k]) & 0xC0) != 0x80)
                return false;
        i += more + 1;
    }
    return true;
}

}  // namespace

std::string renderBytes(const std::string& bytes)
{
    std::string out;
    for (unsigned char byte : bytes)
        out += byte > 0x20 && byte < 0x7F ? std::string(1, static_cast<char>(byte)) : byteName(byte);
    return out;
}

std::vector<Finding> adviceFor(const std::string& subject, const ScanEvidence& scan)
{
    using Path = ScanEvidence::Path;
    std::vector<Finding> advice;
    auto add = [&](Finding::Level level, const std::string& text, const std::string& fix = std::string()) {
        advice.push_back({level, subject, text, fix});
    };
    const std::string& bytes = scan.bytes;
    const bool keyboard = scan.path == Path::Keyboard;

    // The end: a scanner adds its suffix after the data. A HID POS report
    // chain ends a code by itself.
    const unsigned char last = bytes.empty() ? 0 : static_cast<unsigned char>(bytes.back());
    const char* pauseSetting = keyboard ? "Timeout" : "TimeoutCOM";
    if (scan.path == Path::HidPos) {
        if (!bytes.empty() && isControl(last))
            add(Finding::Level::Advice,
                "each code ends with " + byteName(last) +
                    ", which the scanner adds and the driver passes on (Suffix does not apply to HID POS): "
                    "switch the scanner's suffix off");
    } else if (bytes.size() >= 2 && bytes.compare(bytes.size() - 2, 2, "\r\n") == 0) {
        add(Finding::Level::Advice,
            "codes end with <CR><LF>: with Suffix=10 the CR stays at the end of each code; better set the scanner "
            "to end codes with CR alone and use Suffix=13",
            "Suffix=10");
    } else if (!bytes.empty() && isControl(last) && last != kGroupSeparator) {
        add(Finding::Level::Advice, "codes end with " + byteName(last), "Suffix=" + std::to_string(last));
    } else if (!bytes.empty()) {
        add(Finding::Level::Advice,
            std::string("codes end with no suffix: only a pause ends them, so a pause inside a code splits it; "
                        "better set the scanner to add ") +
                (keyboard ? "Enter" : "CR") + " and use Suffix=13",
            std::string("Suffix=-1 ") + pauseSetting + "=" + (keyboard ? "75" : "50"));
    }

    // The start: anything the scanner puts before the data reaches the host.
    const size_t aim = aimLength(bytes);
    if (aim)
        add(Finding::Level::Advice,
            "codes start with the AIM symbology identifier " + bytes.substr(0, aim) +
                ", which reaches the application as part of the code: switch AIM identifiers off on the scanner "
                "unless the application expects them");
    else if (!bytes.empty() && isControl(static_cast<unsigned char>(bytes[0])) && bytes[0] != kGroupSeparator)
        add(Finding::Level::Advice,
            "codes start with " + byteName(static_cast<unsigned char>(bytes[0])) +
                ", a prefix the scanner adds; the driver passes it on: switch the scanner's prefix off");

    // GS, which separates the fields of GS1 codes.
    const bool hasGs = bytes.find(kGroupSeparator) != std::string::npos;
    if (keyboard && scan.otherKeyId >= 0)
        add(Finding::Level::Advice,
            "the scanner pressed " + scan.otherKeyName +
                " inside the code, which types nothing: if it stands for GS, tell the driver",
            "GSSymbolKey=" + std::to_string(scan.otherKeyId));
    if (hasGs && keyboard)
        add(Finding::Level::Advice, "GS arrives typed as " + (scan.gsForm.empty() ? std::string("a key") : scan.gsForm) +
                                        ", which the driver reads as GS (byte 29) with no GS key set",
            "GSSymbolKey=-1");
    else if (hasGs)
        add(Finding::Level::Advice, "GS arrives as the byte 29 (0x1D): nothing to set");
    else if (looksGs1(bytes, scan.symbology) && scan.otherKeyId < 0)
        add(Finding::Level::Problem,
            "a GS1 code without GS: its fields merge (a serial number runs into the next field); turn GS on in "
            "the scanner" + std::string(keyboard ? " (sent as Ctrl+], F8 or Alt+0029)" : " (byte 29)"));

    // Keyboard mode: the layout the scanner types for, Caps Lock, and what the
    // session needs.
    if (keyboard) {
        for (const std::string& key : scan.foreignKeys)
            add(Finding::Level::Problem,
                "the scanner typed " + key +
                    ", a key a US keyboard does not have: it types for another keyboard country; set the scanner's "
                    "keyboard country to USA (the driver reads every scanner as a US keyboard)");
        if (scan.capsLock)
            add(Finding::Level::Problem,
                "Caps Lock was on or pressed: a scanner that follows the keyboard's Caps Lock turns its letters "
                "round; switch Caps Lock off, or set the scanner to ignore it");
        if (!scan.kernelNodeRule.empty())
            add(Finding::Level::Advice,
                "keyboard mode, read from the kernel's node (Wayland, or no X server shows it): the user at the "
                "seat needs the udev rule; HID POS mode, if the scanner offers it, needs neither rule nor layout",
                scan.kernelNodeRule);
    } else if (scan.path == Path::HidPos) {
        add(Finding::Level::Info,
            "HID POS mode: the symbology of this code is " + (scan.symbology.empty() ? "unknown" : scan.symbology));
    }
    for (unsigned char byte : bytes)
        if (byte >= 0x80) {
            if (keyboard)
                add(Finding::Level::Info, "characters beyond ASCII arrive (typed as Alt codes), in UTF-8");
            else if (scan.path == Path::Serial && validUtf8(bytes))
                add(Finding::Level::Advice, "characters beyond ASCII arrive in UTF-8", "COMEncoding=UTF-8");
            else if (scan.path == Path::Serial)
                add(Finding::Level::Advice, "characters beyond ASCII arrive, not in UTF-8: likely Windows-1251",
                    "COMEncoding=Windows-1251");
            break;
        }
    return advice;
}
