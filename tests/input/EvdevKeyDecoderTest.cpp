// Kernel key events read as a US keyboard and framed as the X reader frames them.
#include "input/EvdevKeyDecoder.h"

#include <gtest/gtest.h>

#include <vector>

#include "TestUtil.h"
#include "input/DeviceSettings.h"

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
    EvdevKeyDecoder decoder(settings);
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

TEST(EvdevKeyDecoder, DigitsThenEnter)
{
    EXPECT_EQ(decode(strokes({KEY_1, KEY_2, KEY_3, KEY_ENTER})), Codes{L"MTIz"});
}

TEST(EvdevKeyDecoder, EnterAloneGivesEmptyText)
{
    EXPECT_EQ(decode(strokes({KEY_ENTER})), Codes{L""});
}

TEST(EvdevKeyDecoder, Gs1DataMatrixWithControlBracket)
{
    const auto events = strokes({KEY_0, KEY_1}) + held(KEY_LEFTCTRL, strokes({KEY_RIGHTBRACE})) +
                        strokes({KEY_2, KEY_1, KEY_RIGHTBRACE, KEY_ENTER});
    EXPECT_EQ(decode(events), Codes{b64("01\x1d" "21]")});
}

TEST(EvdevKeyDecoder, F8IsAlwaysGroupSeparator)
{
    DeviceSettings s;
    s.gsKey = 3;  // F4
    EXPECT_EQ(decode(strokes({KEY_0, KEY_F8, KEY_1, KEY_F4, KEY_2, KEY_ENTER}), s), Codes{b64("0\x1d" "1\x1d" "2")});
    EXPECT_EQ(decode(strokes({KEY_0, KEY_F8, KEY_1, KEY_F4, KEY_ENTER})), Codes{b64("0\x1d" "1")});
}

TEST(EvdevKeyDecoder, ShiftAndCapsLock)
{
    const auto events = held(KEY_LEFTSHIFT, strokes({KEY_A, KEY_1})) + held(KEY_RIGHTSHIFT, strokes({KEY_SLASH})) +
                        strokes({KEY_B, KEY_CAPSLOCK, KEY_C, KEY_1}) + held(KEY_LEFTSHIFT, strokes({KEY_D})) +
                        strokes({KEY_CAPSLOCK, KEY_E, KEY_ENTER});
    EXPECT_EQ(decode(events), Codes{b64("A!?bC1De")});
}

TEST(EvdevKeyDecoder, KeypadDigitsAndKeypadEnter)
{
    EXPECT_EQ(decode(strokes({KEY_KP4, KEY_KP2, KEY_KPDOT, KEY_KPMINUS, KEY_KPENTER})), Codes{b64("42.-")});
}

TEST(EvdevKeyDecoder, SuffixVariants)
{
    EXPECT_EQ(decode(strokes({KEY_1, KEY_TAB, KEY_2, KEY_ENTER, KEY_3, KEY_TAB}), withSuffix("\t")),
              (Codes{b64("1"), b64("2\r3")}));
    EXPECT_EQ(decode(strokes({KEY_1, KEY_ENTER, KEY_2, KEY_KPENTER}), withSuffix("")), (Codes{b64("1"), b64("2")}));
    EXPECT_EQ(decode(strokes({KEY_1, KEY_2, KEY_SLASH}), withSuffix("/")), Codes{b64("12")});
    EXPECT_EQ(decode(strokes({KEY_1, KEY_ENTER}), withSuffix("x")), Codes{});
}

TEST(EvdevKeyDecoder, TestModeNamesSpecialKeysAndKeepsSuffix)
{
    DeviceSettings s;
    s.testMode = true;
    EXPECT_EQ(decode(strokes({KEY_F1, KEY_HOME, KEY_CAPSLOCK, KEY_ENTER}), s),
              Codes{b64("'F1''HOME''CAPSLOCK'\r")});
    // Keypad Enter has a name of its own there, so it ends no code.
    EXPECT_EQ(decode(strokes({KEY_1, KEY_KPENTER, KEY_ENTER}), s), Codes{b64("1'CR(Numpad)'\r")});
}

TEST(EvdevKeyDecoder, LostEventsDiscardTheCodeInProgress)
{
    const auto events = strokes({KEY_1, KEY_2}) + std::vector<input_event>{ev(EV_SYN, SYN_DROPPED, 0),
                                                                           ev(EV_KEY, KEY_3, 1), ev(EV_KEY, KEY_ENTER, 1),
                                                                           ev(EV_SYN, SYN_REPORT, 0)} +
                        strokes({KEY_4, KEY_5, KEY_ENTER});
    EXPECT_EQ(decode(events), Codes{b64("45")});
}

TEST(EvdevKeyDecoder, AutoRepeatAndUnknownKeysTypeNothing)
{
    const auto events = strokes({KEY_1}) + std::vector<input_event>{ev(EV_KEY, KEY_2, 1), ev(EV_KEY, KEY_2, 2),
                                                                     ev(EV_KEY, KEY_2, 0), ev(EV_MSC, MSC_SCAN, 7)} +
                        strokes({KEY_MUTE, KEY_ENTER});
    EXPECT_EQ(decode(events), Codes{b64("12")});
}

TEST(EvdevKeyDecoder, ResyncTakesHeldModifiersFromTheDevice)
{
    EvdevKeyDecoder decoder(DeviceSettings{});
    unsigned char keys[KEY_CNT / 8 + 1] = {};
    keys[KEY_LEFTSHIFT / 8] |= 1 << (KEY_LEFTSHIFT % 8);
    decoder.resync(keys);
    std::vector<std::wstring> codes;
    for (const input_event& e : strokes({KEY_A}) + held(KEY_LEFTSHIFT, {}) + strokes({KEY_B, KEY_ENTER}))
        if (auto text = decoder.feed(e))
            codes.push_back(*text);
    EXPECT_EQ(codes, Codes{b64("Ab")});
}
