// The Port choice list offers the hidraw nodes that are scanners, after the
// serial ports, and nothing else changes.
#include <gtest/gtest.h>

#include "HidPosDescriptors.h"
#include "HidrawTestbed.h"
#include "input/HidReportDescriptor.h"
#include "params/LinuxParametersTableBuilder.h"
#include "util/CharsetConversion.h"

using namespace hidpos_descriptors;

namespace {

std::string document()
{
    LinuxParametersTableBuilder builder(false);
    builder.BuildProduct(false);
    return wstr2str(builder.GetProduct());
}

}  // namespace

TEST(HidPosParameters, ScannersAreListedByNodeAndProductAndNothingElseIs)
{
    HidrawTestbed bed;
    bed.plug(0, {0x046D, 0xC077, "", "USB Optical Mouse", kMouse});
    const std::string without = document();
    ASSERT_EQ(without.find("hidraw"), std::string::npos);  // a mouse is not offered

    bed.plug(3, {kHoneywellVendorId, 0x0B87, "A", "Honeywell <Xenon> 1950g", kStandardWithByteCount});
    bed.plug(1, {kNewlandVendorId, 0x0D10, "B", "Newland FM420", kNewlandVendor});
    bed.plug(2, {0x1050, 0x0407, "C", "Yubico YubiKey OTP+FIDO+CCID", kFidoSecurityKey});
    const std::string with = document();
    const std::string items = "<Item Value=\"194\">hidraw1: Newland FM420</Item>"
                              "<Item Value=\"196\">hidraw3: Honeywell  Xenon  1950g</Item>";
    const size_t portListEnd = without.find("</ChoiceList>");
    ASSERT_NE(portListEnd, std::string::npos);
    const size_t itemsAt = with.find(items);
    ASSERT_NE(itemsAt, std::string::npos) << with.substr(0, 400);
    EXPECT_EQ(itemsAt, portListEnd);  // right after the serial ports
    EXPECT_TRUE(with == without.substr(0, portListEnd) + items + without.substr(portListEnd));  // nothing else changed
}
