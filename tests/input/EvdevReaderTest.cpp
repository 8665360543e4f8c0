// Keyboard-mode scanners read from kernel event devices, built in a umockdev
// testbed: a Honeywell-like scanner beside an ordinary AT keyboard.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <thread>

#include "CodeSink.h"
#include "input/KeyCases.h"
#include "MockInput.h"
#include "TestUtil.h"
#include "XvfbServer.h"
#include "input/DeviceSettings.h"
#include "input/InputDeviceKeyboardFactory.h"
#include "input/KeyFramer.h"

namespace {

using Codes = std::vector<std::wstring>;

class EvdevReader : public ::testing::Test {
protected:
    void SetUp() override
    {
        devices.plug(keyboard);
        devices.plug(scanner);
    }

    DeviceSettings settingsFor(const std::string& device, bool testMode = false)
    {
        DeviceSettings s;
        s.port = 0;
        s.keyboardDevice = device;
        s.testMode = testMode;
        return s;
    }

    std::unique_ptr<InputDevice> open(const std::string& device, CodeSink& sink, bool testMode = false)
    {
        return InputDeviceKeyboardFactory().create(settingsFor(device, testMode), sink.callback());
    }

    // Opens the scanner with these settings, types the keys on it and
    // returns the first code that arrives.
    Codes scan(const DeviceSettings& settings, const std::vector<int>& keys)
    {
        CodeSink sink;
        auto source = InputDeviceKeyboardFactory().create(settings, sink.callback());
        EXPECT_TRUE(source);
        if (!source)
            return {};
        devices.type(scanner, keys);
        return sink.waitFor(1);
    }

    DisplayOverride noX{""};
    MockInput devices;
    const MockKeyboard keyboard = atKeyboard();
    const MockKeyboard scanner = honeywellScanner();
    const std::string scannerName = "Honeywell Imaging   Mobility 1950g";  // '&' blanked as settings store it
};

}  // namespace

TEST_F(EvdevReader, ScannerByNameWithoutAnyXServer)
{
    CodeSink sink;
    auto source = open(scannerName, sink);
    ASSERT_TRUE(source);
    devices.type(keyboard, MockInput::keysOf("99\r"));  // the user's keyboard is not read
    devices.type(scanner, MockInput::keysOf("0104601234567893\r"));
    EXPECT_EQ(sink.waitFor(1), Codes{b64("0104601234567893")});
}

TEST_F(EvdevReader, Gs1DataMatrixWithControlBracketAndWithF8)
{
    CodeSink sink;
    auto source = open(scannerName, sink);
    ASSERT_TRUE(source);
    devices.send(scanner, {keyEvent(KEY_0, 1), synEvent(), keyEvent(KEY_0, 0), synEvent(),
                           keyEvent(KEY_LEFTCTRL, 1), synEvent(), keyEvent(KEY_RIGHTBRACE, 1), synEvent(),
                           keyEvent(KEY_RIGHTBRACE, 0), keyEvent(KEY_LEFTCTRL, 0), synEvent()});
    devices.type(scanner, {KEY_1, KEY_F8, KEY_2, KEY_ENTER});
    EXPECT_EQ(sink.waitFor(1), Codes{b64("0\x1d" "1\x1d" "2")});
}

TEST_F(EvdevReader, ShiftCapsLockAndKeypad)
{
    std::vector<int> keys = MockInput::keysOf("Ab");
    keys.insert(keys.end(), {KEY_CAPSLOCK, KEY_C, KEY_CAPSLOCK, KEY_KP7, KEY_KPDOT, KEY_KPENTER});
    EXPECT_EQ(scan(settingsFor(scannerName), keys), Codes{b64("AbC7.")});
}

TEST_F(EvdevReader, SuffixFromSettings)
{
    DeviceSettings s = settingsFor(scannerName);
    s.suffix = "\t";
    s.gsKey = 12;  // INSERT
    EXPECT_EQ(scan(s, {KEY_1, KEY_INSERT, KEY_2, KEY_ENTER, KEY_3, KEY_TAB}), Codes{b64("1\x1d" "2\r3")});
}

TEST_F(EvdevReader, TestModeNamesSpecialKeys)
{
    EXPECT_EQ(scan(settingsFor(scannerName, true), {KEY_F1, KEY_KPENTER, KEY_ENTER}),
              Codes{b64("'F1''CR(Numpad)'\r")});
}

TEST_F(EvdevReader, ScannerByUsbIds)
{
    EXPECT_EQ(scan(settingsFor("usb:0C2E:0b61"), MockInput::keysOf("42\r")), Codes{b64("42")});

    CodeSink none;
    EXPECT_FALSE(open("usb:0c2e:0b62", none));
    EXPECT_FALSE(open("usb:0001:0001", none)) << "the AT keyboard has no USB ids";
}

TEST_F(EvdevReader, TwoScannersAtOnce)
{
    const MockKeyboard second{14, "Datalogic Gryphon GD4500", "05f9:4204"};
    devices.plug(second);
    CodeSink first, other;
    auto a = open(scannerName, first);
    auto b = open("Datalogic Gryphon GD4500", other);
    ASSERT_TRUE(a);
    ASSERT_TRUE(b);
    devices.type(second, MockInput::keysOf("222\r"));
    devices.type(scanner, MockInput::keysOf("111\r"));
    EXPECT_EQ(first.waitFor(1), Codes{b64("111")});
    EXPECT_EQ(other.waitFor(1), Codes{b64("222")});

    // Interleaved, each scanner's Shift, Caps Lock and Alt stay its own.
    devices.send(scanner, {keyEvent(KEY_LEFTSHIFT, 1), synEvent(), keyEvent(KEY_CAPSLOCK, 1), synEvent(),
                           keyEvent(KEY_CAPSLOCK, 0), synEvent()});
    devices.send(second, {keyEvent(KEY_A, 1), keyEvent(KEY_A, 0), keyEvent(KEY_LEFTALT, 1), synEvent(),
                          keyEvent(KEY_KP0, 1), keyEvent(KEY_KP0, 0), keyEvent(KEY_KP2, 1), keyEvent(KEY_KP2, 0),
                          synEvent()});
    devices.send(scanner, {keyEvent(KEY_A, 1), keyEvent(KEY_A, 0), keyEvent(KEY_LEFTSHIFT, 0), keyEvent(KEY_A, 1),
                           keyEvent(KEY_A, 0), synEvent()});
    devices.send(second, {keyEvent(KEY_KP9, 1), keyEvent(KEY_KP9, 0), keyEvent(KEY_LEFTALT, 0), keyEvent(KEY_A, 1),
                          keyEvent(KEY_A, 0), keyEvent(KEY_ENTER, 1), keyEvent(KEY_ENTER, 0), synEvent()});
    devices.send(scanner, {keyEvent(KEY_ENTER, 1), keyEvent(KEY_ENTER, 0), synEvent()});
    EXPECT_EQ(first.waitFor(2), (Codes{b64("111"), b64("aA")}));
    EXPECT_EQ(other.waitFor(2), (Codes{b64("222"), b64("a\x1d" "a")}));
}

TEST_F(EvdevReader, UnknownNameFailsToOpen)
{
    CodeSink sink;
    EXPECT_FALSE(open("No such scanner", sink));
    EXPECT_FALSE(open("", sink));
}

TEST_F(EvdevReader, NodeHeldByAnotherProgramFailsToOpen)
{
    devices.holdElsewhere(scanner);
    CodeSink sink;
    EXPECT_FALSE(open(scannerName, sink));
    EXPECT_TRUE(open(scannerName, sink, true)) << "the device test only listens: no grab needed";
}

TEST_F(EvdevReader, UnplugAndReplugRebinds)
{
    CodeSink sink;
    auto source = open(scannerName, sink);
    ASSERT_TRUE(source);
    devices.type(scanner, MockInput::keysOf("1\r"));
    ASSERT_EQ(sink.waitFor(1).size(), 1u);
    devices.unplug(scanner);
    // Back on another node: the testbed cannot make a removed node again.
    const MockKeyboard back = honeywellScanner(15);
    devices.plug(back);
    // The reader learns of the return from udev, then opens the new node;
    // keys written before it opens are still read (the testbed keeps them).
    devices.type(back, MockInput::keysOf("2\r"));
    EXPECT_EQ(sink.waitFor(2), (Codes{b64("1"), b64("2")}));
}

TEST_F(EvdevReader, BoundScannerIsNotSwappedForANewcomer)
{
    CodeSink sink;
    auto source = open(scannerName, sink);
    ASSERT_TRUE(source);
    const MockKeyboard twin = honeywellScanner(13);
    devices.plug(twin);
    devices.type(twin, MockInput::keysOf("9\r"));
    devices.type(scanner, MockInput::keysOf("1\r"));
    devices.type(twin, MockInput::keysOf("8\r"));
    devices.type(scanner, MockInput::keysOf("2\r"));
    EXPECT_EQ(sink.waitFor(2), (Codes{b64("1"), b64("2")}));
    EXPECT_EQ(sink.now().size(), 2u);
}

TEST_F(EvdevReader, LostEventsDiscardTheCodeUpToItsEnd)
{
    CodeSink sink;
    auto source = open(scannerName, sink);
    ASSERT_TRUE(source);
    devices.type(scanner, {KEY_1, KEY_2});
    devices.send(scanner, {synEvent(SYN_DROPPED), keyEvent(KEY_3, 1), synEvent()});
    devices.type(scanner, MockInput::keysOf("45\r67\r"));
    EXPECT_EQ(sink.waitFor(1), Codes{b64("67")});
}

// After lost events the held keys and lit locks are asked of the device: here
// Shift held and Caps Lock lit, so the next scan reads e with both, F with
// Caps Lock alone once Shift is released.
TEST_F(EvdevReader, LostEventsResyncKeysAndLocksFromTheDevice)
{
    devices.reportKeyState(scanner, {KEY_LEFTSHIFT}, {LED_CAPSL});
    CodeSink sink;
    auto source = open(scannerName, sink);
    ASSERT_TRUE(source);
    devices.type(scanner, {KEY_A, KEY_B});
    devices.send(scanner, {synEvent(SYN_DROPPED), keyEvent(KEY_C, 1), synEvent()});
    devices.type(scanner, {KEY_D, KEY_ENTER});
    devices.send(scanner, {keyEvent(KEY_E, 1), keyEvent(KEY_E, 0), keyEvent(KEY_LEFTSHIFT, 0), synEvent()});
    devices.type(scanner, {KEY_F, KEY_ENTER});
    EXPECT_EQ(sink.waitFor(1), Codes{b64("eF")});
}

// The key table through the kernel path: each case on a source of its own.
TEST_F(EvdevReader, KeyTable)
{
    for (const KeyCase& c : keyCases()) {
        CodeSink sink;
        auto source = InputDeviceKeyboardFactory().create(::settingsFor(c, scannerName), sink.callback());
        ASSERT_TRUE(source) << c.name;
        std::vector<KeyStep> steps = c.keys;
        const std::vector<KeyStep> sentinel = sentinelKeys(c);
        steps.insert(steps.end(), sentinel.begin(), sentinel.end());
        std::vector<input_event> events;
        for (const KeyStep& k : steps)
            events.insert(events.end(),
                          {k.code == kSynDropped ? synEvent(SYN_DROPPED) : keyEvent(k.code, k.value), synEvent()});
        devices.send(scanner, events);
        const auto expected = expectedWithSentinel(c);
        EXPECT_EQ(sink.waitFor(expected.size()), expected) << c.name;
    }
}

TEST_F(EvdevReader, WithoutSuffixAPauseOfTimeoutEndsTheCode)
{
    DeviceSettings s = settingsFor(scannerName);
    s.suffix = "";
    // Long enough that one burst of keys is never cut on a loaded machine.
    s.keyboardTimeout = 1000;
    CodeSink sink;
    auto source = InputDeviceKeyboardFactory().create(s, sink.callback());
    ASSERT_TRUE(source);
    devices.type(scanner, MockInput::keysOf("12\r3"));
    ASSERT_EQ(sink.waitFor(1), Codes{b64("12\r3")});
    devices.type(scanner, MockInput::keysOf("45"));
    EXPECT_EQ(sink.waitFor(2), (Codes{b64("12\r3"), b64("45")}));
}

TEST_F(EvdevReader, WithASuffixTimeoutChangesNothing)
{
    DeviceSettings s = settingsFor(scannerName);
    s.keyboardTimeout = 1;
    CodeSink sink;
    auto source = InputDeviceKeyboardFactory().create(s, sink.callback());
    ASSERT_TRUE(source);
    devices.type(scanner, MockInput::keysOf("1"));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    devices.type(scanner, MockInput::keysOf("2\r"));
    EXPECT_EQ(sink.waitFor(1), Codes{b64("12")});
}

// A key flood with no suffix: past 1 MiB the code is dropped whole and the
// reader's memory stays bounded (heap in use is measured while the flood is
// still unended); the next scan arrives whole.
TEST_F(EvdevReader, FloodPastOneMebibyteIsDroppedAndMemoryStaysBounded)
{
    CodeSink sink;
    auto source = open(scannerName, sink);
    ASSERT_TRUE(source);
    devices.type(scanner, MockInput::keysOf("1\r"));
    ASSERT_EQ(sink.waitFor(1), Codes{b64("1")});
    const std::vector<input_event> chunk(64 * 1024, keyEvent(KEY_A, 1));
    const size_t before = liveHeapBytes();
    // Twice the bound: whatever the node still buffers when the writes
    // return, the reader has long passed the bound by then.
    for (size_t sent = 0; sent < 2 * kMaxCodeBytes; sent += chunk.size())
        devices.send(scanner, chunk);
    const long grown = static_cast<long>(liveHeapBytes()) - static_cast<long>(before);
    devices.type(scanner, MockInput::keysOf("\rb\r"));
    EXPECT_EQ(sink.waitFor(2, std::chrono::seconds(60)), (Codes{b64("1"), b64("b")}));
    RecordProperty("heap_growth_bytes", std::to_string(grown));
    std::printf("heap grown during a flood of %zu keys: %ld bytes\n", 2 * kMaxCodeBytes, grown);
    EXPECT_LT(grown, static_cast<long>(kMaxCodeBytes) / 2);
}

TEST_F(EvdevReader, ClosingWhileUnpluggedReturns)
{
    CodeSink sink;
    auto source = open(scannerName, sink);
    ASSERT_TRUE(source);
    devices.unplug(scanner);
    source.reset();
    SUCCEED();
}

TEST_F(EvdevReader, XServerWithoutTheScannerLeavesItToTheKernelPath)
{
    XvfbServer x;
    EXPECT_EQ(scan(settingsFor(scannerName), MockInput::keysOf("7\r")), Codes{b64("7")});
}
