// The device test window lists kernel keyboards X does not show: a scanner
// in a umockdev testbed, typing while the window is up on Xvfb.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "ChildProcess.h"
#include "MockInput.h"
#include "TestUtil.h"
#include "XClient.h"
#include "XvfbServer.h"

TEST(EvdevDeviceTestWindow, ShowsWhatAKernelScannerTypes)
{
    XvfbServer server;
    MockInput devices;
    const MockKeyboard scanner = honeywellScanner();
    devices.plug(scanner);
    XClient x;
    ChildProcess host({DEVICE_TEST_HOST}, {"LSAN_OPTIONS=suppressions=" RAVLIN_TEST_DATA "/dialog/lsan.supp"});
    const Window window = x.waitForWindow("Тест устройства");
    ASSERT_NE(window, 0u) << "the window did not appear";
    int wx, wy, width, height;
    x.geometry(window, wx, wy, width, height);

    devices.type(scanner, {KEY_0, KEY_1, KEY_F8, KEY_2, KEY_ENTER});
    // The first row, then Copy (where the plain host's GTK 2 theme puts them).
    const int firstRowY = 42, buttonsFromRight = 57, copyY = 94, closeY = 20;
    std::string copied;
    // Until the row is there (the scan crosses the reader thread and the
    // window's idle handler first).
    for (int attempt = 0; attempt < 50 && copied.empty(); ++attempt) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        x.click(wx + 150, wy + firstRowY);
        x.click(wx + width - buttonsFromRight, wy + copyY);
        copied = runCommand("timeout 5 xclip -o -selection clipboard 2>/dev/null");
    }
    EXPECT_EQ(copied, "01 'GS' 2 'CR' ") << "test mode keeps the suffix";
    x.click(wx + width - buttonsFromRight, wy + closeY);
    EXPECT_EQ(host.readLine().rfind("DeviceTest returned 1 result 1", 0), 0u);
    host.closeInput();
    EXPECT_EQ(host.wait(), 0);
}
