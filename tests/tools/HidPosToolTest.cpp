// ravlin-host ports on a machine with HID devices: every hidraw node, and why
// the ones that cannot be read cannot.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "ChildProcess.h"
#include "HidPosDescriptors.h"
#include "HidPosReports.h"
#include "HidrawTestbed.h"
#include "SymbologyTap.h"
#include "input/HidReportDescriptor.h"
#include "input/PortFamily.h"

using namespace hidpos_descriptors;

TEST(HidPosTool, PortsListsScannersAndSaysWhyANodeCannotBeRead)
{
    HidrawTestbed bed;
    bed.plug(0, {kHoneywellVendorId, 0x0B87, "A", "Honeywell Xenon", kStandardWithByteCount});
    bed.plug(1, {kNewlandVendorId, 0x0D10, "B", "Newland FM420", kNewlandVendor});
    bed.plug(2, {0x046D, 0xC077, "", "USB Optical Mouse", kMouse});
    bed.plug(3, {0x05E0, 0x1900, "D", "Bar\x01" "Code\x1b" "Scanner", kStandard});  // control bytes in its name
    ASSERT_EQ(chmod(bed.nodeFile(1).c_str(), 0), 0);
    // Root without the power to override file permissions, as a user is.
    ChildProcess tool({"/usr/bin/setpriv", "--inh-caps=-dac_override,-dac_read_search",
                       "--bounding-set=-dac_override,-dac_read_search", RAVLIN_HOST_TOOL, "ports"},
                      {}, true);
    std::string out;
    for (std::string line; !(line = tool.readLine()).empty();)
        out += line + "\n";
    EXPECT_EQ(tool.wait(), 0) << out;
    EXPECT_NE(out.find("  193\thidraw0: Honeywell Xenon\n"), std::string::npos) << out;  // offered as a Port value
    EXPECT_NE(out.find("  194\thidraw1: Newland FM420\n"), std::string::npos) << out;
    EXPECT_NE(out.find("  193\t/dev/hidraw0\tHoneywell Xenon\tHID POS scanner\n"), std::string::npos) << out;
    EXPECT_NE(out.find("  194\t/dev/hidraw1\tNewland FM420\tcannot be opened: Permission denied (udev/70-ravlin-scanners.rules"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find("  195\t/dev/hidraw2\tUSB Optical Mouse\tnot a scanner in HID POS mode"), std::string::npos)
        << out;
    EXPECT_EQ(out.find("195\thidraw2"), std::string::npos) << out;  // the mouse is no Port choice
    EXPECT_NE(out.find("  196\thidraw3: Bar Code Scanner\n"), std::string::npos) << out;
    EXPECT_NE(out.find("  196\t/dev/hidraw3\tBar Code Scanner\tHID POS scanner\n"), std::string::npos) << out;
}

// listen --json takes each scan's symbology from a reader of its own; alone on
// an emulated node (which, unlike a kernel one, hands each report to only one
// reader) it gives them in order.
TEST(HidPosTool, SymbologyTapGivesEachScansSymbologyInOrder)
{
    HidrawTestbed bed;
    const HidrawTestbed::Device scanner{kHoneywellVendorId, 0x0B87, "T", "Honeywell Xenon", kStandardWithByteCount};
    bed.plug(0, scanner);
    SymbologyTap tap;
    ASSERT_TRUE(tap.start(kHidPosFamily.base));
    EXPECT_EQ(tap.next(), std::nullopt);  // nothing scanned yet
    const HidPosLayout layout = *parseHidPosLayout(scanner.descriptor, scanner.vendorId);
    std::string stream;
    for (const auto& [aim, code] : {std::pair("]E0", "4006381333931"), std::pair("]d2", "0104600439931256")})
        for (const std::string& r : reportsFor(layout, aim, code))
            stream += r;
    bed.send(0, stream);
    EXPECT_EQ(tap.next(kHangTimeout), std::optional<std::string>("]E0"));
    EXPECT_EQ(tap.next(kHangTimeout), std::optional<std::string>("]d2"));

    SymbologyTap serial;
    EXPECT_FALSE(serial.start(129));  // a serial port has no symbology to give
}
