// The device test window lists kernel keyboards X does not show: a scanner
// in a umockdev testbed, typing while the window is up on Xvfb.
#include <gtest/gtest.h>

#include "FirstScanInWindow.h"
#include "MockInput.h"
#include "XvfbServer.h"

TEST(EvdevDeviceTestWindow, ShowsWhatAKernelScannerTypes)
{
    XvfbServer server;
    MockInput devices;
    const MockKeyboard scanner = honeywellScanner();
    devices.plug(scanner);
    XClient x;
    const std::string copied =
        copyFirstScanInWindow(x, [&] { devices.type(scanner, {KEY_0, KEY_1, KEY_F8, KEY_2, KEY_ENTER}); });
    EXPECT_EQ(copied, "01 'GS' 2 'CR' ") << "test mode keeps the suffix";
}
