// A HID POS scanner's codes reach the test host as the same external events
// as a serial scanner's.
#include <gtest/gtest.h>

#include "HidPosDescriptors.h"
#include "HidPosReports.h"
#include "HidrawTestbed.h"
#include "TestHost.h"
#include "TestUtil.h"
#include "input/PortFamily.h"

using namespace hidpos_descriptors;

namespace {

const HidrawTestbed::Device kScanner{kHoneywellVendorId, 0x0B87, "E2E1", "Honeywell Xenon 1950g", kStandardWithByteCount};

class HidPosEvents : public ::testing::Test {
protected:
    void SetUp() override { bed.plug(0, kScanner); }
    void TearDown() override
    {
        IComponentBase* object = component.object();
        host.destroy(object);
        EXPECT_EQ(host.memory.liveBlocks(), 0u);
    }
    HostEvent scan(const std::string& code)
    {
        const size_t before = host.connection.events().size();
        std::string stream;
        for (const std::string& r : reportsFor(*parseHidPosLayout(kScanner.descriptor, kScanner.vendorId), "]d2", code))
            stream += r;
        bed.send(0, stream);
        const auto events = host.connection.waitForEvents(before + 1);
        if (events.size() <= before)
            return HostEvent{L"", L"<no event>", L"", 0, {}};
        return events[before];
    }

    HidrawTestbed bed;
    TestHost host;
    Component component = host.create(L"InputDevice");
};

}  // namespace

TEST_F(HidPosEvents, AllThreeOutputForms)
{
    ASSERT_TRUE(component.setParameter(L"Port", intVar(static_cast<int>(kHidPosFamily.base))));
    const std::wstring text = component.open();
    ASSERT_EQ(text, L"InputDevice#1");
    HostEvent e = scan("0104600439931256215Ab\x1D" "93zZ");
    EXPECT_EQ(e.source, L"InputDevice#1");
    EXPECT_EQ(e.name, L"Штрихкод");
    EXPECT_EQ(e.data, L"0104600439931256215Ab\x1D" L"93zZ");  // the GS byte kept as it came
    component.close(text);

    ASSERT_TRUE(component.setParameter(L"OutputDataType", intVar(1)));
    const std::wstring hrs = component.open();
    e = scan("01\x1D" "21ab c");
    EXPECT_EQ(e.name, L"Штрихкод");
    EXPECT_EQ(e.data, L"01(029)21ab(032)");  // the same rendering as a serial code's
    component.close(hrs);

    ASSERT_TRUE(component.setParameter(L"OutputDataType", intVar(2)));
    component.open();
    e = scan("123");
    EXPECT_EQ(e.name, L"ШтрихкодBase64");
    EXPECT_EQ(e.data, L"MTIz");
}

TEST_F(HidPosEvents, ANodeThatIsNoScannerFailsOpenWithTheUsualError)
{
    bed.plug(1, {0x046D, 0xC077, "", "USB Optical Mouse", kMouse});
    ASSERT_TRUE(component.setParameter(L"Port", intVar(static_cast<int>(kHidPosFamily.base + 1))));
    EXPECT_EQ(component.open(), L"");
}
