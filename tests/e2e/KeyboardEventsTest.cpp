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
