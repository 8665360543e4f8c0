// The device test window listens to HID POS scanners too: a scanner on an
// emulated hidraw node sends a GS1 code while the window is up on Xvfb.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "ChildProcess.h"
#include "HidPosDescriptors.h"
#include "HidPosReports.h"
#include "HidrawTestbed.h"
#include "TestUtil.h"
#include "XClient.h"
#include "XvfbServer.h"

using namespace hidpos_descriptors;

TEST(HidPosDeviceTestWindow, ShowsWhatAHidPosScannerSends)
{
    XvfbServer server;
    HidrawTestbed bed;
    const HidrawTestbed::Device scanner{kHoneywellVendorId, 0x0B87, "W1", "Honeywell Xenon 1950g",
                                        kStandardWithByteCount};
    bed.plug(2, scanner);
    XClient x;
    ChildProcess host({DEVICE_TEST_HOST}, {"LSAN_OPTIONS=suppressions=" RAVLIN_TEST_DATA "/dialog/lsan.supp"});
    const Window window = x.waitForWindow("Тест устройства");
    ASSERT_NE(window, 0u) << "the window did not appear";
    int wx, wy, width, height;
    x.geometry(window, wx, wy, width, height);

    std::string stream;
    for (const std::string& r : reportsFor(*parseHidPosLayout(scanner.descriptor, scanner.vendorId), "]d2",
                                           "0104600439931256215Ab\x1D" "93zZ"))
        stream += r;
    bed.send(2, stream);
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
    EXPECT_EQ(copied, "0104600439931256215Ab 'GS' 93zZ") << "the code alone, its GS byte shown by name";
    x.click(wx + width - buttonsFromRight, wy + closeY);
    EXPECT_EQ(host.readLine().rfind("DeviceTest returned 1 result 1", 0), 0u);
    host.closeInput();
    EXPECT_EQ(host.wait(), 0);
}
