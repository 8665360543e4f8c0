// The device test window listens to HID POS scanners too: a scanner on an
// emulated hidraw node sends a GS1 code while the window is up on Xvfb.
#include <gtest/gtest.h>

#include "FirstScanInWindow.h"
#include "HidPosDescriptors.h"
#include "HidPosReports.h"
#include "HidrawTestbed.h"
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
    const std::string copied = copyFirstScanInWindow(x, [&] {
        std::string stream;
        for (const std::string& r : reportsFor(*parseHidPosLayout(scanner.descriptor, scanner.vendorId), "]d2",
                                               "0104600439931256215Ab\x1D" "93zZ"))
            stream += r;
        bed.send(2, stream);
    });
    EXPECT_EQ(copied, "0104600439931256215Ab 'GS' 93zZ") << "the code alone, its GS byte shown by name";
}
