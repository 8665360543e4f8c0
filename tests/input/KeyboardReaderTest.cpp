// The keyboard reader against a real X server, keys injected through XTest.
#include <gtest/gtest.h>

#include <X11/keysym.h>
#include <unistd.h>

#include <thread>

#include "CodeSink.h"
#include "input/KeyCases.h"
#include "XClient.h"
#include "TestUtil.h"
#include "XvfbServer.h"
#include "input/InputDeviceKeyboard.h"
#include "input/InputDeviceKeyboardFactory.h"
#include "util/SymbolCodecs.h"

using namespace std::chrono_literals;

namespace {

const std::string kXTestKeyboard = "Virtual core XTEST keyboard";

class KeyboardReader : public ::testing::Test {
protected:
    static void SetUpTestSuite() { server = new XvfbServer(); }
    static void TearDownTestSuite()
    {
        delete server;
        server = nullptr;
    }
    void SetUp() override
    {
        x = std::make_unique<XClient>();
        xtestId = x->devicesNamed("Virtual core XTEST keyboard").at(0);
    }
    static XvfbServer* server;
    std::unique_ptr<XClient> x;
    int xtestId = -1;
    CodeSink sink;
};
XvfbServer* KeyboardReader::server = nullptr;

}  // namespace

TEST_F(KeyboardReader, DigitsThenEnter)
{
    auto source = InputDeviceKeyboardFactory().create(keyboardNamed(kXTestKeyboard), sink.callback());
    ASSERT_TRUE(source);
    x->typeText("123\n");
    EXPECT_EQ(sink.waitFor(1), std::vector<std::wstring>{L"MTIz"});
    EXPECT_NE(sink.readerThread(), static_cast<pid_t>(syscall(SYS_gettid)));
}

TEST_F(KeyboardReader, EnterAloneGivesEmptyText)
{
    auto source = InputDeviceKeyboardFactory().create(keyboardNamed(kXTestKeyboard), sink.callback());
    ASSERT_TRUE(source);
    x->typeText("\n");
    EXPECT_EQ(sink.waitFor(1), std::vector<std::wstring>{L""});
}

TEST_F(KeyboardReader, F8IsAlwaysGroupSeparator)
{
    for (int gsKey : {-1, 3}) {
        CodeSink s;
        auto f = keyboardNamed(kXTestKeyboard);
        f.gsKey = gsKey;
        auto source = InputDeviceKeyboardFactory().create(f, s.callback());
        ASSERT_TRUE(source);
        x->type({XK_0, XK_1, XK_F8, XK_2, XK_Return});
        EXPECT_EQ(s.waitFor(1), std::vector<std::wstring>{b64("01\x1D" "2")}) << gsKey;
    }
}

TEST_F(KeyboardReader, ConfiguredKeyIsGroupSeparator)
{
    auto f = keyboardNamed(kXTestKeyboard);
    f.gsKey = 3;  // F4
    auto source = InputDeviceKeyboardFactory().create(f, sink.callback());
    ASSERT_TRUE(source);
    x->type({XK_1, XK_F4, XK_2, XK_Return});
    EXPECT_EQ(sink.waitFor(1), std::vector<std::wstring>{b64("1\x1D" "2")});
}

TEST_F(KeyboardReader, ControlBracketIsGroupSeparatorBracketAloneIsNot)
{
    auto source = InputDeviceKeyboardFactory().create(keyboardNamed(kXTestKeyboard), sink.callback());
    ASSERT_TRUE(source);
    x->type({XK_1});
    x->chord(XK_Control_L, XK_bracketright);
    x->type({XK_bracketright, XK_Return});
    EXPECT_EQ(sink.waitFor(1), std::vector<std::wstring>{b64("1\x1D]")});
}

TEST_F(KeyboardReader, ShiftGivesCapitals)
{
    auto source = InputDeviceKeyboardFactory().create(keyboardNamed(kXTestKeyboard), sink.callback());
    ASSERT_TRUE(source);
    x->chord(XK_Shift_L, XK_a);
    x->type({XK_b, XK_Return});
    EXPECT_EQ(sink.waitFor(1), std::vector<std::wstring>{b64("Ab")});
}

TEST_F(KeyboardReader, SuffixFromSettings)
{
    auto f = keyboardNamed(kXTestKeyboard);
    f.suffix = "x";
    auto source = InputDeviceKeyboardFactory().create(f, sink.callback());
    ASSERT_TRUE(source);
    x->typeText("12\n3x");
    EXPECT_EQ(sink.waitFor(1), std::vector<std::wstring>{b64("12\r3")});
}

TEST_F(KeyboardReader, TestModeNamesSpecialKeysAndKeepsSuffix)
{
    auto f = keyboardNamed(kXTestKeyboard);
    f.testMode = true;
    auto source = InputDeviceKeyboardFactory().create(f, sink.callback());
    ASSERT_TRUE(source);
    x->type({XK_F1, XK_Return});
    EXPECT_EQ(sink.waitFor(1), std::vector<std::wstring>{b64("'F1'\r")});
}

TEST_F(KeyboardReader, GrabsInNormalModeOnly)
{
    {
        auto source = InputDeviceKeyboardFactory().create(keyboardNamed(kXTestKeyboard), sink.callback());
        ASSERT_TRUE(source);
        EXPECT_FALSE(x->grabSucceeds(xtestId));
    }
    EXPECT_TRUE(x->grabSucceeds(xtestId));  // released on destruction
    auto f = keyboardNamed(kXTestKeyboard);
    f.testMode = true;
    auto listener = InputDeviceKeyboardFactory().create(f, sink.callback());
    ASSERT_TRUE(listener);
    EXPECT_TRUE(x->grabSucceeds(xtestId));
}

TEST_F(KeyboardReader, KeysWhileAnotherProcessHasFocusAreIgnored)
{
    auto source = InputDeviceKeyboardFactory().create(keyboardNamed(kXTestKeyboard), sink.callback());
    ASSERT_TRUE(source);
    // A window whose owner, by _NET_WM_PID, is another process (our parent).
    XClient other;
    other.focusWindowOwnedBy(getppid() == 1 ? 1 : getppid());
    x->typeText("11\n");
    // The reader asks whose the focus is when it handles a key, so it must
    // have handled these before the focus moves; a second is plenty.
    std::this_thread::sleep_for(1s);
    EXPECT_TRUE(sink.now().empty());

    XClient mine;
    mine.focusWindowOwnedBy(getpid());
    x->typeText("22\n");
    EXPECT_EQ(sink.waitFor(1), std::vector<std::wstring>{b64("22")});
}

TEST_F(KeyboardReader, FocusOnPointerRootIsNoFocusWindow)
{
    XSetInputFocus(x->display(), PointerRoot, RevertToPointerRoot, CurrentTime);
    XSync(x->display(), False);
    auto source = InputDeviceKeyboardFactory().create(keyboardNamed(kXTestKeyboard), sink.callback());
    ASSERT_TRUE(source);
    x->typeText("5\n");
    EXPECT_EQ(sink.waitFor(1), std::vector<std::wstring>{b64("5")});
}

TEST_F(KeyboardReader, TwoDevicesOfOneNameBindTheLastListed)
{
    x->addMaster("Twin");
    x->addMaster("Twin");
    const auto ids = x->devicesNamed("Twin XTEST keyboard");
    ASSERT_EQ(ids.size(), 2u);
    auto source = InputDeviceKeyboardFactory().create(keyboardNamed("Twin XTEST keyboard"), sink.callback());
    ASSERT_TRUE(source);
    EXPECT_EQ(static_cast<InputDeviceKeyboard&>(*source).boundDeviceId(), ids.back());
    x->typeOn(ids.front(), {XK_1, XK_Return});
    x->typeOn(ids.back(), {XK_2, XK_Return});
    EXPECT_EQ(sink.waitFor(1), std::vector<std::wstring>{b64("2")});
    source.reset();
    x->removeMasters("Twin");
}

TEST_F(KeyboardReader, UnknownNameOrNoServerFailsToOpen)
{
    EXPECT_FALSE(InputDeviceKeyboardFactory().create(keyboardNamed("No such scanner"), sink.callback()));
    EXPECT_FALSE(InputDeviceKeyboardFactory().create(keyboardNamed(""), sink.callback()));
    {
        DisplayOverride unset("");
        EXPECT_FALSE(InputDeviceKeyboardFactory().create(keyboardNamed(kXTestKeyboard), sink.callback()));
    }
    {
        DisplayOverride nowhere(":4071");
        EXPECT_FALSE(InputDeviceKeyboardFactory().create(keyboardNamed(kXTestKeyboard), sink.callback()));
    }
}

TEST_F(KeyboardReader, ReplugBindsAndGrabsTheNewDevice)
{
    const int before = x->addMaster("Hotplug");
    auto source = InputDeviceKeyboardFactory().create(keyboardNamed("Hotplug XTEST keyboard"), sink.callback());
    ASSERT_TRUE(source);
    auto& keyboard = static_cast<InputDeviceKeyboard&>(*source);
    EXPECT_EQ(keyboard.boundDeviceId(), before);
    EXPECT_FALSE(x->grabSucceeds(before));
    x->typeOn(before, {XK_1, XK_Return});
    ASSERT_EQ(sink.waitFor(1), std::vector<std::wstring>{b64("1")});

    x->removeMasters("Hotplug");
    EXPECT_TRUE(waitUntil([&] { return keyboard.boundDeviceId() == -1; }));

    const int after = x->addMaster("Hotplug");
    EXPECT_TRUE(waitUntil([&] { return keyboard.boundDeviceId() == after; }));
    EXPECT_FALSE(x->grabSucceeds(after));
    x->typeOn(after, {XK_2, XK_Return});
    EXPECT_EQ(sink.waitFor(2), (std::vector<std::wstring>{b64("1"), b64("2")}));
    source.reset();
    EXPECT_TRUE(x->grabSucceeds(after));
    x->removeMasters("Hotplug");
}

TEST_F(KeyboardReader, NewcomerOfTheSameNameDoesNotTakeTheGrab)
{
    const int first = x->addMaster("Pair");
    auto source = InputDeviceKeyboardFactory().create(keyboardNamed("Pair XTEST keyboard"), sink.callback());
    ASSERT_TRUE(source);
    auto& keyboard = static_cast<InputDeviceKeyboard&>(*source);
    ASSERT_EQ(keyboard.boundDeviceId(), first);

    const int second = x->addMaster("Pair");
    x->typeOn(first, {XK_1, XK_Return});  // handled after the hierarchy change
    ASSERT_EQ(sink.waitFor(1), std::vector<std::wstring>{b64("1")});
    EXPECT_EQ(keyboard.boundDeviceId(), first);
    EXPECT_FALSE(x->grabSucceeds(first));
    EXPECT_TRUE(x->grabSucceeds(second));
    source.reset();
    x->removeMasters("Pair");
}

// The key table through X: each case on a source of its own, typed by key
// code (the kernel's + 8) so that the server's key map plays no part.
TEST_F(KeyboardReader, KeyTable)
{
    for (const KeyCase& c : keyCases()) {
        if (c.kernelOnly)
            continue;
        CodeSink s;
        auto source = InputDeviceKeyboardFactory().create(settingsFor(c, kXTestKeyboard), s.callback());
        ASSERT_TRUE(source) << c.name;
        std::vector<std::pair<unsigned, bool>> keys;
        auto add = [&keys](const std::vector<KeyStep>& steps) {
            for (const KeyStep& k : steps)
                keys.emplace_back(static_cast<unsigned>(k.code + 8), k.value != 0);
        };
        add(c.keys);
        add(sentinelKeys(c));
        x->keyCodes(keys);
        const auto expected = expectedWithSentinel(c);
        EXPECT_EQ(s.waitFor(expected.size()), expected) << c.name;
    }
}

TEST_F(KeyboardReader, WithoutSuffixAPauseOfTimeoutEndsTheCode)
{
    auto f = keyboardNamed(kXTestKeyboard);
    f.suffix = "";
    // Long enough that one burst of keys is never cut on a loaded machine.
    f.keyboardTimeout = 1000;
    auto source = InputDeviceKeyboardFactory().create(f, sink.callback());
    ASSERT_TRUE(source);
    x->typeText("12\n3");
    ASSERT_EQ(sink.waitFor(1), std::vector<std::wstring>{b64("12\r3")});
    x->typeText("45");
    EXPECT_EQ(sink.waitFor(2), (std::vector<std::wstring>{b64("12\r3"), b64("45")}));
}

TEST_F(KeyboardReader, WithASuffixTimeoutChangesNothing)
{
    auto f = keyboardNamed(kXTestKeyboard);
    f.keyboardTimeout = 1;
    auto source = InputDeviceKeyboardFactory().create(f, sink.callback());
    ASSERT_TRUE(source);
    x->typeText("1");
    std::this_thread::sleep_for(100ms);
    x->typeText("2\n");
    EXPECT_EQ(sink.waitFor(1), std::vector<std::wstring>{b64("12")});
}

// Each scanner's Shift, Caps Lock and Alt are its own.
TEST_F(KeyboardReader, TwoScannersInterleaved)
{
    const int a = x->addMaster("First");
    const int b = x->addMaster("Second");
    CodeSink first, second;
    auto one = InputDeviceKeyboardFactory().create(keyboardNamed("First XTEST keyboard"), first.callback());
    auto two = InputDeviceKeyboardFactory().create(keyboardNamed("Second XTEST keyboard"), second.callback());
    ASSERT_TRUE(one);
    ASSERT_TRUE(two);
    auto on = [this](int id, std::vector<std::pair<unsigned, bool>> keys) { x->keyCodes(keys, id); };
    constexpr unsigned shift = 50, capsLock = 66, alt = 64, kp2 = 88, kp9 = 81, kp0 = 90, letterA = 38, enter = 36;
    on(a, {{shift, true}, {capsLock, true}, {capsLock, false}});
    on(b, {{letterA, true}, {letterA, false}, {alt, true}, {kp0, true}, {kp0, false}, {kp2, true}, {kp2, false}});
    on(a, {{letterA, true}, {letterA, false}, {shift, false}, {letterA, true}, {letterA, false}});
    on(b, {{kp9, true}, {kp9, false}, {alt, false}, {letterA, true}, {letterA, false}, {enter, true}, {enter, false}});
    on(a, {{enter, true}, {enter, false}});
    EXPECT_EQ(first.waitFor(1), std::vector<std::wstring>{b64("aA")});
    EXPECT_EQ(second.waitFor(1), std::vector<std::wstring>{b64("a\x1d" "a")});
    one.reset();
    two.reset();
    x->removeMasters("First");
    x->removeMasters("Second");
}

TEST(KeyboardReaderServerLoss, ServerGoingAwayLeavesTheProcessRunning)
{
    XvfbServer server;
    CodeSink sink;
    auto source = InputDeviceKeyboardFactory().create(keyboardNamed(kXTestKeyboard), sink.callback());
    ASSERT_TRUE(source);
    {
        XClient x;
        x.typeText("9\n");
        ASSERT_EQ(sink.waitFor(1).size(), 1u);
    }
    server.kill();
    std::this_thread::sleep_for(200ms);
    source.reset();  // returns, and the process goes on
    SUCCEED();
}
