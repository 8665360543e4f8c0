// A keyboard-mode scanner through the add-in, as the platform drives it.
#include <gtest/gtest.h>

#include <X11/keysym.h>

#include "TestHost.h"
#include "XClient.h"
#include "XvfbServer.h"

TEST(KeyboardEvents, ScansArriveInAllFormsAndCloseReleasesTheGrab)
{
    XvfbServer server;
    XClient x;
    const int xtest = x.devicesNamed("Virtual core XTEST keyboard").at(0);
    TestHost host;
    Component c = host.create(L"InputDevice");
    ASSERT_TRUE(c.setParameter(L"Port", intVar(0)));
    ASSERT_TRUE(c.setParameter(L"KeyboardDevice", c.str(L"Virtual core XTEST keyboard")));

    const std::wstring id = c.open();
    ASSERT_EQ(id, L"InputDevice#1");
    EXPECT_FALSE(x.grabSucceeds(xtest));
    x.type({XK_4, XK_6, XK_F8, XK_a, XK_Return});
    auto e = host.connection.waitForEvent(1);
    ASSERT_TRUE(e);
    EXPECT_EQ(e->source, L"InputDevice#1");
    EXPECT_EQ(e->name, L"Штрихкод");
    EXPECT_EQ(e->data, L"46\x1D" L"a");
    EXPECT_TRUE(c.close(id));
    EXPECT_TRUE(x.grabSucceeds(xtest));

    ASSERT_TRUE(c.setParameter(L"OutputDataType", intVar(1)));
    const std::wstring hrs = c.open();
    x.type({XK_4, XK_F8, XK_a, XK_b, XK_Return});
    EXPECT_THAT(host.connection.waitForEvent(2), EventData(L"4(029)ab"));
    c.close(hrs);

    ASSERT_TRUE(c.setParameter(L"OutputDataType", intVar(2)));
    ASSERT_TRUE(c.setParameter(L"GSSymbolKey", intVar(12)));  // INSERT
    const std::wstring b64 = c.open();
    x.type({XK_1, XK_Insert, XK_2, XK_Return});
    e = host.connection.waitForEvent(3);
    ASSERT_TRUE(e);
    EXPECT_EQ(e->name, L"ШтрихкодBase64");
    EXPECT_EQ(e->data, L"MR0y");
    c.close(b64);

    IComponentBase* o = c.object();
    host.destroy(o);
    EXPECT_EQ(host.memory.liveBlocks(), 0u);
}

// An Alt+keypad code above ASCII reaches the host as the letter (text) and as
// its UTF-8 bytes (Base64); Suffix -1 and Timeout reach the reader.
TEST(KeyboardEvents, AltCodesAndTimeoutFramingThroughTheHost)
{
    XvfbServer server;
    XClient x;
    TestHost host;
    Component c = host.create(L"InputDevice");
    ASSERT_TRUE(c.setParameter(L"Port", intVar(0)));
    ASSERT_TRUE(c.setParameter(L"KeyboardDevice", c.str(L"Virtual core XTEST keyboard")));
    // X key codes: Left Alt, keypad 0, 1, 9, 2, the digit 1, Enter.
    constexpr unsigned alt = 64, kp0 = 90, kp1 = 87, kp9 = 81, kp2 = 88, one = 10, enter = 36;
    const std::vector<std::pair<unsigned, bool>> scan = {
        {alt, true},  {kp0, true},  {kp0, false}, {kp1, true},  {kp1, false},   {kp9, true},  {kp9, false},
        {kp2, true},  {kp2, false}, {alt, false}, {one, true},  {one, false},   {enter, true}, {enter, false}};
    std::wstring id = c.open();
    ASSERT_FALSE(id.empty());
    x.keyCodes(scan);
    EXPECT_THAT(host.connection.waitForEvent(1), EventData(L"\u0410" L"1"));
    c.close(id);

    ASSERT_TRUE(c.setParameter(L"OutputDataType", intVar(2)));
    id = c.open();
    x.keyCodes(scan);
    EXPECT_THAT(host.connection.waitForEvent(2), EventData(L"0JAx"));
    c.close(id);

    ASSERT_TRUE(c.setParameter(L"OutputDataType", intVar(0)));
    ASSERT_TRUE(c.setParameter(L"Suffix", intVar(-1)));
    // Long enough that one burst of keys is never cut on a loaded machine.
    ASSERT_TRUE(c.setParameter(L"Timeout", intVar(1000)));
    id = c.open();
    x.typeText("12\n3");
    EXPECT_THAT(host.connection.waitForEvent(3), EventData(L"12\r3"));
    c.close(id);

    IComponentBase* o = c.object();
    host.destroy(o);
}

TEST(KeyboardEvents, OpenFailsForUnknownDeviceOrNoServer)
{
    TestHost host;
    Component c = host.create(L"InputDevice");
    ASSERT_TRUE(c.setParameter(L"Port", intVar(0)));
    ASSERT_TRUE(c.setParameter(L"KeyboardDevice", c.str(L"Virtual core XTEST keyboard")));
    {
        DisplayOverride none("");
        EXPECT_EQ(c.open(), L"");
    }
    {
        XvfbServer server;
        ASSERT_TRUE(c.setParameter(L"KeyboardDevice", c.str(L"Honeywell 1900")));
        EXPECT_EQ(c.open(), L"");
    }
    EXPECT_EQ(c.call(L"GetLastError").params[0].text, L"Ошибка подключения. Проверьте доступность устройства.");
    IComponentBase* o = c.object();
    host.destroy(o);
}
