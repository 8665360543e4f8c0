#include "KeyCases.h"

#include <linux/input-event-codes.h>

#include <cctype>
#include <stdexcept>

#include "TestUtil.h"

namespace {

struct KeyOf {
    char c;
    int code;
    bool shift;
};

const KeyOf kKeys[] = {
    {'1', KEY_1, false}, {'2', KEY_2, false}, {'3', KEY_3, false}, {'4', KEY_4, false},
    {'5', KEY_5, false}, {'6', KEY_6, false}, {'7', KEY_7, false}, {'8', KEY_8, false},
    {'9', KEY_9, false}, {'0', KEY_0, false}, {'-', KEY_MINUS, false}, {'=', KEY_EQUAL, false},
    {'[', KEY_LEFTBRACE, false}, {']', KEY_RIGHTBRACE, false}, {';', KEY_SEMICOLON, false},
    {'\'', KEY_APOSTROPHE, false}, {'`', KEY_GRAVE, false}, {'\\', KEY_BACKSLASH, false},
    {',', KEY_COMMA, false}, {'.', KEY_DOT, false}, {'/', KEY_SLASH, false}, {' ', KEY_SPACE, false},
    {'\r', KEY_ENTER, false}, {'\t', KEY_TAB, false},
    {'!', KEY_1, true}, {'@', KEY_2, true}, {'#', KEY_3, true}, {'$', KEY_4, true},
    {'%', KEY_5, true}, {'^', KEY_6, true}, {'&', KEY_7, true}, {'*', KEY_8, true},
    {'(', KEY_9, true}, {')', KEY_0, true}, {'_', KEY_MINUS, true}, {'+', KEY_EQUAL, true},
    {'{', KEY_LEFTBRACE, true}, {'}', KEY_RIGHTBRACE, true}, {':', KEY_SEMICOLON, true},
    {'"', KEY_APOSTROPHE, true}, {'~', KEY_GRAVE, true}, {'|', KEY_BACKSLASH, true},
    {'<', KEY_COMMA, true}, {'>', KEY_DOT, true}, {'?', KEY_SLASH, true},
};

const int kLetters[] = {KEY_A, KEY_B, KEY_C, KEY_D, KEY_E, KEY_F, KEY_G, KEY_H, KEY_I,
                        KEY_J, KEY_K, KEY_L, KEY_M, KEY_N, KEY_O, KEY_P, KEY_Q, KEY_R,
                        KEY_S, KEY_T, KEY_U, KEY_V, KEY_W, KEY_X, KEY_Y, KEY_Z};

// The keys a GSSymbolKey value names, in KeyID order.
const int kGsKeys[] = {
    KEY_F1, KEY_F2, KEY_F3, KEY_F4, KEY_F5, KEY_F6, KEY_F7, KEY_F8, KEY_F9, KEY_F10, KEY_F11, KEY_F12,
    KEY_INSERT, KEY_DELETE, KEY_HOME, KEY_END, KEY_PAGEUP, KEY_PAGEDOWN,
    KEY_CAPSLOCK, KEY_RIGHTALT, KEY_KPENTER,
};

using Steps = std::vector<KeyStep>;

Steps operator+(Steps a, const Steps& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

Steps tap(std::initializer_list<int> codes)
{
    Steps s;
    for (int code : codes)
        s.insert(s.end(), {{code, 1}, {code, 0}});
    return s;
}

Steps held(int modifier, const Steps& inner)
{
    return Steps{{modifier, 1}} + inner + Steps{{modifier, 0}};
}

// Alt held while the digits are typed on the keypad.
Steps altCode(const std::string& digits, int alt = KEY_LEFTALT)
{
    static const int keypad[] = {KEY_KP0, KEY_KP1, KEY_KP2, KEY_KP3, KEY_KP4,
                                 KEY_KP5, KEY_KP6, KEY_KP7, KEY_KP8, KEY_KP9};
    Steps inner;
    for (char d : digits)
        inner = inner + tap({keypad[d - '0']});
    return held(alt, inner);
}

// Control with the key of a character; with Shift where the character needs it.
Steps ctrl(char c)
{
    bool shift = false;
    const int code = usKeyFor(c, shift);
    return held(KEY_LEFTCTRL, shift ? held(KEY_LEFTSHIFT, tap({code})) : tap({code}));
}

std::string bytes(int from, int to)
{
    std::string s;
    for (int b = from; b <= to; ++b)
        s += static_cast<char>(b);
    return s;
}

std::vector<KeyCase> build()
{
    std::vector<KeyCase> t;
    const std::string printable = bytes(0x20, 0x7E);
    t.push_back({"all 95 printable characters", usText(printable + "\r"), {printable}, -1, "\r", true});
    t.push_back({"Right Shift", held(KEY_RIGHTSHIFT, tap({KEY_H, KEY_1})) + usText("ey\r"), {"H!ey"}, -1, "\r", true});
    t.push_back({"Caps Lock, with and without Shift",
                 tap({KEY_CAPSLOCK}) + usText("ab1C!") + tap({KEY_CAPSLOCK}) + usText("dE\r"),
                 {"AB1c!dE"}, -1, "\r", true});
    t.push_back({"keypad with Num Lock on",
                 tap({KEY_KP0, KEY_KP1, KEY_KP2, KEY_KP3, KEY_KP4, KEY_KP5, KEY_KP6, KEY_KP7, KEY_KP8, KEY_KP9,
                      KEY_KPDOT, KEY_KPPLUS, KEY_KPMINUS, KEY_KPASTERISK, KEY_KPSLASH, KEY_KPENTER}),
                 {"0123456789.+-*/"}, -1, "\r", true});
    t.push_back({"Shift+keypad types nothing",
                 usText("7") + held(KEY_LEFTSHIFT, tap({KEY_KP1, KEY_KP5, KEY_KP9, KEY_KP0, KEY_KPDOT})) +
                     usText("8\r"),
                 {"78"}, -1, "\r", true});
    t.push_back({"auto-repeat types nothing more",
                 Steps{{KEY_A, 1}, {KEY_A, 2}, {KEY_A, 2}, {KEY_A, 0}} + usText("b\r"), {"ab"}});
    t.push_back({"keys that type nothing",
                 usText("x") + tap({KEY_F1, KEY_F2, KEY_F12, KEY_UP, KEY_LEFT, KEY_MUTE, KEY_VOLUMEUP,
                                     KEY_LEFTMETA, KEY_RIGHTMETA}) +
                     usText("y\r"),
                 {"xy"}, -1, "\r", true});
    t.push_back({"Alt+029", usText("01") + altCode("029") + usText("21\r"), {"01\x1d" "21"}});
    t.push_back({"Alt+0029", usText("01") + altCode("0029") + usText("21\r"), {"01\x1d" "21"}});
    t.push_back({"Alt+030", usText("x") + altCode("030") + usText("y\r"), {"x\x1ey"}});
    t.push_back({"Alt+004", usText("x") + altCode("004") + usText("y\r"), {"x\x04y"}});
    t.push_back({"Alt+0192 (Windows-1251)", altCode("0192") + usText("\r"), {"\xd0\x90"}});
    t.push_back({"Alt+0200 (Windows-1251)", altCode("0200") + usText("\r"), {"\xd0\x98"}});
    t.push_back({"Alt+128 (CP866)", altCode("128") + usText("\r"), {"\xd0\x90"}});
    t.push_back({"Alt+200 (CP866)", altCode("200") + usText("\r"), {"\xe2\x95\x9a"}});
    t.push_back({"Alt+65", altCode("65") + usText("\r"), {"A"}});
    t.push_back({"Alt+300 (mod 256)", altCode("300") + usText("\r"), {","}});
    t.push_back({"Alt alone", usText("a") + tap({KEY_LEFTALT}) + usText("b\r"), {"ab"}, -1, "\r", true});
    t.push_back({"Alt+a", held(KEY_LEFTALT, tap({KEY_A})) + usText("\r"), {"a"}, -1, "\r", true});
    t.push_back({"Right Alt+029", usText("1") + altCode("029", KEY_RIGHTALT) + usText("2\r"), {"1\x1d" "2"}});
    // Ctrl+M is CR, the suffix: it ends the first code.
    Steps control;
    for (char c : std::string("@abcdefghijklmnopqrstuvwxyz[\\]^_"))
        control = control + ctrl(c);
    t.push_back({"Ctrl+ASCII, all 32 codes", control + usText("\r"), {bytes(0, 12), bytes(14, 31)}, -1, "\r", true});
    t.push_back({"ISO 15434 envelope, Control",
                 usText("[)>") + ctrl('^') + usText("06") + ctrl(']') + usText("1P12345") + ctrl('^') + ctrl('d') +
                     usText("\r"),
                 {"[)>\x1e" "06\x1d" "1P12345\x1e\x04"}, -1, "\r", true});
    t.push_back({"ISO 15434 envelope, Alt codes",
                 usText("[)>") + altCode("030") + usText("06") + altCode("029") + usText("1P12345") +
                     altCode("030") + altCode("004") + usText("\r"),
                 {"[)>\x1e" "06\x1d" "1P12345\x1e\x04"}});
    // A GS1 DataMatrix marking code: GTIN, serial, GS, check key.
    const std::string head = "010460123456789321Ab3-cD", tail = "93dGVz";
    const std::string marking = head + "\x1d" + tail;
    t.push_back({"GS1 marking code, Ctrl+]", usText(head) + ctrl(']') + usText(tail + "\r"), {marking}, -1, "\r",
                 true});
    t.push_back({"GS1 marking code, F8", usText(head) + tap({KEY_F8}) + usText(tail + "\r"), {marking}});
    t.push_back({"GS1 marking code, Alt+029", usText(head) + altCode("029") + usText(tail + "\r"), {marking}});
    t.push_back({"GS1 marking code, Alt+0029", usText(head) + altCode("0029") + usText(tail + "\r"), {marking}});
    for (int key = 0; key <= 20; ++key)
        t.push_back({"GS1 marking code, GSSymbolKey=" + std::to_string(key),
                     usText(head) + tap({kGsKeys[key]}) + usText(tail + "\r"), {marking}, key});
    t.push_back({"GSSymbolKey=18 (Caps Lock) with mixed case",
                 usText("aB") + tap({KEY_CAPSLOCK}) + usText("Cd") + tap({KEY_CAPSLOCK}) + usText("eF\r"),
                 {"aB\x1d" "Cd\x1d" "eF"}, 18});
    t.push_back({"GSSymbolKey=19 (Right Alt) starts no Alt code",
                 held(KEY_RIGHTALT, tap({KEY_KP4, KEY_KP2})) + usText("\r"), {"\x1d" "42"}, 19});
    t.push_back({"GSSymbolKey=20 (keypad Enter) is not the suffix", usText("1") + tap({KEY_KPENTER}) + usText("2\r"),
                 {"1\x1d" "2"}, 20});
    t.push_back({"suffix Tab", usText("1\r2\t"), {"1\r2"}, -1, "\t"});
    KeyCase lost{"SYN_DROPPED mid-code: the next scan whole",
                 usText("abc") + Steps{{kSynDropped, 0}} + usText("ef\r") + usText("gh\r"), {"gh"}};
    lost.kernelOnly = true;
    t.push_back(lost);
    return t;
}

}  // namespace

const std::vector<KeyCase>& keyCases()
{
    static const std::vector<KeyCase> table = build();
    return table;
}

int usKeyFor(char c, bool& shift)
{
    const auto u = static_cast<unsigned char>(c);
    if (std::isalpha(u)) {
        shift = std::isupper(u);
        return kLetters[std::tolower(u) - 'a'];
    }
    for (const KeyOf& k : kKeys)
        if (k.c == c) {
            shift = k.shift;
            return k.code;
        }
    return 0;
}

std::vector<KeyStep> usText(const std::string& text)
{
    Steps steps;
    for (char c : text) {
        bool shift = false;
        const int code = usKeyFor(c, shift);
        if (!code)
            throw std::runtime_error(std::string("no US key types ") + c);
        steps = steps + (shift ? held(KEY_LEFTSHIFT, tap({code})) : tap({code}));
    }
    return steps;
}

std::vector<KeyStep> sentinelKeys(const KeyCase& c)
{
    return tap({KEY_9, c.suffix == "\t" ? KEY_TAB : KEY_ENTER});
}

std::vector<std::wstring> expectedWithSentinel(const KeyCase& c)
{
    std::vector<std::wstring> codes;
    for (const std::string& code : c.codes)
        codes.push_back(b64(code));
    codes.push_back(b64("9"));
    return codes;
}

DeviceSettings settingsFor(const KeyCase& c, const std::string& device)
{
    DeviceSettings s = keyboardNamed(device);
    s.gsKey = c.gsKey;
    s.suffix = c.suffix;
    return s;
}
