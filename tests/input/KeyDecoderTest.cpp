// Key events read as a US keyboard and framed, the same for both readers; the
// shared key table checked here against the decoder and against a US keymap
// compiled by xkbcommon.
#include "input/KeyDecoder.h"

#include <gtest/gtest.h>
#include <xkbcommon/xkbcommon.h>

#include <vector>

#include "TestUtil.h"
#include "input/DeviceSettings.h"
#include "input/KeyCases.h"
#include "util/SymbolCodecs.h"

namespace {

input_event ev(int type, int code, int value)
{
    input_event e{};
    e.type = static_cast<unsigned short>(type);
    e.code = static_cast<unsigned short>(code);
    e.value = value;
    return e;
}

// A press and a release of each key, each followed by SYN_REPORT as the kernel sends them.
std::vector<input_event> strokes(std::initializer_list<int> keys)
{
    std::vector<input_event> events;
    for (int key : keys)
        events.insert(events.end(), {ev(EV_KEY, key, 1), ev(EV_SYN, SYN_REPORT, 0), ev(EV_KEY, key, 0),
                                     ev(EV_SYN, SYN_REPORT, 0)});
    return events;
}

std::vector<input_event> held(int modifier, std::vector<input_event> inner)
{
    inner.insert(inner.begin(), ev(EV_KEY, modifier, 1));
    inner.push_back(ev(EV_KEY, modifier, 0));
    return inner;
}

std::vector<input_event> operator+(std::vector<input_event> a, const std::vector<input_event>& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

std::vector<std::wstring> decode(const std::vector<input_event>& events, const DeviceSettings& settings = {})
{
    KeyDecoder decoder(settings);
    std::vector<std::wstring> codes;
    for (const input_event& e : events)
        if (auto text = decoder.feed(e))
            codes.push_back(*text);
    return codes;
}

DeviceSettings withSuffix(const std::string& suffix)
{
    DeviceSettings s;
    s.suffix = suffix;
    return s;
}

using Codes = std::vector<std::wstring>;

}  // namespace

TEST(KeyDecoder, DigitsThenEnter)
{
    EXPECT_EQ(decode(strokes({KEY_1, KEY_2, KEY_3, KEY_ENTER})), Codes{L"MTIz"});
}

TEST(KeyDecoder, EnterAloneGivesEmptyText)
{
    EXPECT_EQ(decode(strokes({KEY_ENTER})), Codes{L""});
}

TEST(KeyDecoder, Gs1DataMatrixWithControlBracket)
{
    const auto events = strokes({KEY_0, KEY_1}) + held(KEY_LEFTCTRL, strokes({KEY_RIGHTBRACE})) +
                        strokes({KEY_2, KEY_1, KEY_RIGHTBRACE, KEY_ENTER});
    EXPECT_EQ(decode(events), Codes{b64("01\x1d" "21]")});
}

TEST(KeyDecoder, F8IsAlwaysGroupSeparator)
{
    DeviceSettings s;
    s.gsKey = 3;  // F4
    EXPECT_EQ(decode(strokes({KEY_0, KEY_F8, KEY_1, KEY_F4, KEY_2, KEY_ENTER}), s), Codes{b64("0\x1d" "1\x1d" "2")});
    EXPECT_EQ(decode(strokes({KEY_0, KEY_F8, KEY_1, KEY_F4, KEY_ENTER})), Codes{b64("0\x1d" "1")});
}

TEST(KeyDecoder, ShiftAndCapsLock)
{
    const auto events = held(KEY_LEFTSHIFT, strokes({KEY_A, KEY_1})) + held(KEY_RIGHTSHIFT, strokes({KEY_SLASH})) +
                        strokes({KEY_B, KEY_CAPSLOCK, KEY_C, KEY_1}) + held(KEY_LEFTSHIFT, strokes({KEY_D})) +
                        strokes({KEY_CAPSLOCK, KEY_E, KEY_ENTER});
    EXPECT_EQ(decode(events), Codes{b64("A!?bC1de")});
}

TEST(KeyDecoder, KeypadDigitsAndKeypadEnter)
{
    EXPECT_EQ(decode(strokes({KEY_KP4, KEY_KP2, KEY_KPDOT, KEY_KPMINUS, KEY_KPENTER})), Codes{b64("42.-")});
}

TEST(KeyDecoder, SuffixVariants)
{
    EXPECT_EQ(decode(strokes({KEY_1, KEY_TAB, KEY_2, KEY_ENTER, KEY_3, KEY_TAB}), withSuffix("\t")),
              (Codes{b64("1"), b64("2\r3")}));
    EXPECT_EQ(decode(strokes({KEY_1, KEY_ENTER, KEY_2, KEY_NUMERIC_0, KEY_ENTER}), withSuffix(std::string(1, '\0'))),
              (Codes{b64("1"), b64("2")}));
    EXPECT_EQ(decode(strokes({KEY_1, KEY_2, KEY_SLASH}), withSuffix("/")), Codes{b64("12")});
    EXPECT_EQ(decode(strokes({KEY_1, KEY_ENTER}), withSuffix("x")), Codes{});
}

TEST(KeyDecoder, TestModeNamesSpecialKeysAndKeepsSuffix)
{
    DeviceSettings s;
    s.testMode = true;
    EXPECT_EQ(decode(strokes({KEY_F1, KEY_HOME, KEY_CAPSLOCK, KEY_ENTER}), s),
              Codes{b64("'F1''HOME''CAPSLOCK'\r")});
    // Keypad Enter has a name of its own there, so it ends no code.
    EXPECT_EQ(decode(strokes({KEY_1, KEY_KPENTER, KEY_ENTER}), s), Codes{b64("1'CR(Numpad)'\r")});
}

TEST(KeyDecoder, LostEventsDiscardTheCodeUpToItsEnd)
{
    // The suffix inside the loss ends nothing: the rest of the damaged code goes too.
    const auto events = strokes({KEY_1, KEY_2}) + std::vector<input_event>{ev(EV_SYN, SYN_DROPPED, 0),
                                                                           ev(EV_KEY, KEY_3, 1), ev(EV_KEY, KEY_ENTER, 1),
                                                                           ev(EV_SYN, SYN_REPORT, 0)} +
                        strokes({KEY_4, KEY_ENTER, KEY_5, KEY_6, KEY_ENTER});
    EXPECT_EQ(decode(events), Codes{b64("56")});
}

TEST(KeyDecoder, AutoRepeatAndUnknownKeysTypeNothing)
{
    const auto events = strokes({KEY_1}) + std::vector<input_event>{ev(EV_KEY, KEY_2, 1), ev(EV_KEY, KEY_2, 2),
                                                                     ev(EV_KEY, KEY_2, 0), ev(EV_MSC, MSC_SCAN, 7)} +
                        strokes({KEY_MUTE, KEY_ENTER});
    EXPECT_EQ(decode(events), Codes{b64("12")});
}

TEST(KeyDecoder, ResyncTakesHeldModifiersFromTheDevice)
{
    KeyDecoder decoder(DeviceSettings{});
    unsigned char keys[KEY_CNT / 8 + 1] = {};
    keys[KEY_LEFTSHIFT / 8] |= 1 << (KEY_LEFTSHIFT % 8);
    unsigned char leds[LED_CNT / 8 + 1] = {};
    leds[LED_CAPSL / 8] |= 1 << (LED_CAPSL % 8);
    decoder.resync(keys, leds);
    std::vector<std::wstring> codes;
    for (const input_event& e : strokes({KEY_A}) + held(KEY_LEFTSHIFT, {}) + strokes({KEY_B, KEY_ENTER}))
        if (auto text = decoder.feed(e))
            codes.push_back(*text);
    EXPECT_EQ(codes, Codes{b64("aB")}) << "Shift held and Caps Lock lit, then Caps Lock alone";
}

namespace {

// The events of a table case as the kernel delivers them.
std::vector<input_event> eventsOf(const std::vector<KeyStep>& keys)
{
    std::vector<input_event> events;
    for (const KeyStep& k : keys) {
        if (k.code == kSynDropped)
            events.push_back(ev(EV_SYN, SYN_DROPPED, 0));
        else
            events.push_back(ev(EV_KEY, k.code, k.value));
        events.push_back(ev(EV_SYN, SYN_REPORT, 0));
    }
    return events;
}

Codes expectedCodes(const KeyCase& c)
{
    Codes codes;
    for (const std::string& code : c.codes)
        codes.push_back(b64(code));
    return codes;
}

DeviceSettings settingsOf(const KeyCase& c)
{
    DeviceSettings s;
    s.gsKey = c.gsKey;
    s.suffix = c.suffix;
    return s;
}

// What a US keyboard with Num Lock on types for the keys, cut into codes at
// CR: xkbcommon's keymap and state, knowing nothing of the driver.
std::vector<std::string> usReference(const std::vector<KeyStep>& keys)
{
    xkb_context* context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
    const xkb_rule_names names = {"evdev", "pc105", "us", "", ""};
    xkb_keymap* keymap = xkb_keymap_new_from_names(context, &names, XKB_KEYMAP_COMPILE_NO_FLAGS);
    EXPECT_TRUE(keymap) << "xkbcommon cannot compile the us keymap";
    std::vector<std::string> codes;
    if (!keymap) {
        xkb_context_unref(context);
        return codes;
    }
    xkb_state* state = xkb_state_new(keymap);
    const xkb_mod_index_t numLock = xkb_keymap_mod_get_index(keymap, XKB_MOD_NAME_NUM);
    xkb_state_update_mask(state, 0, 0, 1u << numLock, 0, 0, 0);
    std::string code;
    for (const KeyStep& k : keys) {
        const xkb_keycode_t keycode = static_cast<xkb_keycode_t>(k.code + 8);
        if (k.value == 1) {
            char text[16] = {};
            const int length = xkb_state_key_get_utf8(state, keycode, text, sizeof text);
            // Ctrl+@ types NUL: the length, not the terminator, tells.
            const std::string typed(text, static_cast<size_t>(std::max(length, 0)));
            for (char byte : typed) {
                if (byte == '\r') {
                    codes.push_back(code);
                    code.clear();
                } else {
                    code += byte;
                }
            }
        }
        xkb_state_update_key(state, keycode, k.value ? XKB_KEY_DOWN : XKB_KEY_UP);
    }
    xkb_state_unref(state);
    xkb_keymap_unref(keymap);
    xkb_context_unref(context);
    return codes;
}

}  // namespace

TEST(KeyDecoder, KeyTable)
{
    for (const KeyCase& c : keyCases())
        EXPECT_EQ(decode(eventsOf(c.keys), settingsOf(c)), expectedCodes(c)) << c.name;
}

TEST(KeyDecoder, KeyTableAgreesWithAUsKeymap)
{
    size_t checked = 0;
    for (const KeyCase& c : keyCases()) {
        if (!c.plainUs)
            continue;
        EXPECT_EQ(usReference(c.keys), c.codes) << c.name;
        ++checked;
    }
    EXPECT_GE(checked, 10u);
}

TEST(KeyDecoder, CodeOfOneMebibyteIsDeliveredOneByteMoreIsDropped)
{
    KeyDecoder decoder{DeviceSettings{}};
    const input_event a = ev(EV_KEY, KEY_A, 1), release = ev(EV_KEY, KEY_A, 0), enter = ev(EV_KEY, KEY_ENTER, 1);
    for (size_t i = 0; i < kMaxCodeBytes; ++i) {
        decoder.feed(a);
        decoder.feed(release);
    }
    auto text = decoder.feed(enter);
    ASSERT_TRUE(text);
    EXPECT_EQ(text->size(), raw2Base64(std::string(kMaxCodeBytes, 'a')).size());
    for (size_t i = 0; i <= kMaxCodeBytes; ++i) {
        decoder.feed(a);
        decoder.feed(release);
    }
    EXPECT_FALSE(decoder.feed(enter)) << "the over-long code is dropped whole";
    decoder.feed(ev(EV_KEY, KEY_B, 1));
    EXPECT_EQ(decoder.feed(enter), std::optional<std::wstring>(b64("b"))) << "framing restarts after its suffix";
}

TEST(KeyDecoder, WithoutSuffixAPauseEndsTheCode)
{
    DeviceSettings s = withSuffix("");
    s.keyboardTimeout = 40;
    KeyDecoder decoder(s);
    EXPECT_EQ(decoder.pauseTimeout(), -1) << "nothing to end";
    for (const input_event& e : strokes({KEY_1, KEY_ENTER, KEY_2}))
        EXPECT_FALSE(decoder.feed(e));
    EXPECT_EQ(decoder.pauseTimeout(), 40);
    EXPECT_EQ(decoder.pause(), std::optional<std::wstring>(b64("1\r2")));
    EXPECT_EQ(decoder.pauseTimeout(), -1);
    EXPECT_FALSE(decoder.pause());

    // With a suffix a pause changes nothing.
    KeyDecoder framed{DeviceSettings{}};
    for (const input_event& e : strokes({KEY_1}))
        framed.feed(e);
    EXPECT_EQ(framed.pauseTimeout(), -1);
    EXPECT_FALSE(framed.pause());
    EXPECT_EQ(decode(strokes({KEY_1, KEY_ENTER})), Codes{b64("1")});
}

TEST(KeyDecoder, AltCodeCutByTheSuffixDeliversWhatItHas)
{
    const auto events = strokes({KEY_1}) + std::vector<input_event>{ev(EV_KEY, KEY_LEFTALT, 1)} +
                        strokes({KEY_KP6, KEY_KP5, KEY_ENTER}) +
                        std::vector<input_event>{ev(EV_KEY, KEY_LEFTALT, 0)} + strokes({KEY_2, KEY_ENTER});
    EXPECT_EQ(decode(events), (Codes{b64("1"), b64("2")}));
}
