#include "input/HidPosAssembler.h"

#include <gtest/gtest.h>

#include "HidPosCaptures.h"
#include "HidPosDescriptors.h"
#include "HidPosReports.h"
#include "input/HidReportDescriptor.h"
#include "input/PortFamily.h"

using namespace hidpos_descriptors;

namespace {

const std::string kEan13 = "4006381333931";
const char kGs = '\x1D';

// A GS1 DataMatrix marking code of 150 bytes with its group separators.
std::string gs1DataMatrix()
{
    std::string code = "0104650117240408215'kT9mBqX>&cz" + std::string(1, kGs) + "91EE06" + std::string(1, kGs) + "92";
    while (code.size() < 150)
        code += static_cast<char>('A' + code.size() % 26);
    return code;
}

std::vector<ScannedCode> assemble(const HidPosLayout& layout, const std::vector<std::string>& reports)
{
    HidPosAssembler a(layout);
    std::vector<ScannedCode> codes;
    for (const std::string& r : reports)
        if (auto code = a.feed(r))
            codes.push_back(*code);
    return codes;
}

HidPosLayout layoutOf(const std::string& descriptor, uint16_t vendor = 0x05E0)
{
    auto layout = parseHidPosLayout(descriptor, vendor);
    EXPECT_TRUE(layout);
    return layout.value_or(HidPosLayout{});
}

}  // namespace

TEST(HidReportDescriptor, StandardPage)
{
    const HidPosLayout l = layoutOf(kStandard);
    EXPECT_EQ(l.reportId, 2);
    EXPECT_EQ(l.reportSize, 61u);
    EXPECT_EQ(l.symbologyOffset, std::optional<size_t>(1));
    EXPECT_EQ(l.dataOffset, 4u);
    EXPECT_EQ(l.dataCapacity, 56u);
    EXPECT_FALSE(l.lengthOffset);
    EXPECT_EQ(l.continuedOffset, 60u);
    EXPECT_EQ(l.continuedMask, 1);
}

TEST(HidReportDescriptor, StandardPageWithByteCount)
{
    const HidPosLayout l = layoutOf(kStandardWithByteCount);
    EXPECT_EQ(l.reportSize, 64u);
    EXPECT_EQ(l.lengthOffset, std::optional<size_t>(1));
    EXPECT_EQ(l.symbologyOffset, std::optional<size_t>(2));
    EXPECT_EQ(l.dataOffset, 5u);
    EXPECT_EQ(l.continuedOffset, 63u);
    EXPECT_EQ(l.continuedMask, 1);
}

TEST(HidReportDescriptor, VendorLayoutIsKnownByItsStructureForAnyMaker)
{
    // Honeywell, Access IS, Intermec, and a vendor id never seen before.
    for (uint16_t vendor : {kHoneywellVendorId, uint16_t(0x0DB5), uint16_t(0x067E), uint16_t(0x1234)}) {
        const HidPosLayout h = layoutOf(kHoneywellVendor, vendor);
        EXPECT_EQ(h.reportId, 2);
        EXPECT_EQ(h.reportSize, 64u);
        EXPECT_EQ(h.lengthOffset, std::optional<size_t>(1));
        EXPECT_EQ(h.symbologyOffset, std::optional<size_t>(2));
        EXPECT_EQ(h.dataOffset, 5u);
        EXPECT_EQ(h.continuedOffset, 63u);
        EXPECT_EQ(layoutOf(kNewlandVendor, vendor).dataOffset, 5u);  // the page number does not matter
    }
    const HidPosLayout n = layoutOf(kNewlandVendor, kNewlandVendorId);
    EXPECT_FALSE(n.symbologyOffset);
    EXPECT_EQ(n.dataOffset, 2u);
    EXPECT_EQ(n.continuedOffset, 63u);
}

TEST(HidReportDescriptor, DevicesThatMerelyHaveAVendorPageAreNotScanners)
{
    for (uint16_t vendor : {kHoneywellVendorId, kNewlandVendorId, uint16_t(0x1050), uint16_t(0x046D), uint16_t(0x0764)}) {
        EXPECT_FALSE(parseHidPosLayout(kFidoSecurityKey, vendor));
        EXPECT_FALSE(parseHidPosLayout(kHidppReceiver, vendor));
        EXPECT_FALSE(parseHidPosLayout(kBootKeyboard, vendor));
        EXPECT_FALSE(parseHidPosLayout(kMouse, vendor));
        EXPECT_FALSE(parseHidPosLayout(kUps, vendor));
        EXPECT_FALSE(parseHidPosLayout(kVendorWords, vendor));
        EXPECT_FALSE(parseHidPosLayout(kVendorUnnumbered, vendor));
    }
    // The scanners' report 2 declared in a collection on another page.
    EXPECT_FALSE(parseHidPosLayout(bytes({0x05, 0x01}) + kHoneywellVendor.substr(3), 0x1234));
}

TEST(HidReportDescriptor, OtherDevicesAreNotScanners)
{
    EXPECT_FALSE(parseHidPosLayout(kMouse, kHoneywellVendorId));
    EXPECT_FALSE(parseHidPosLayout("", 0));
    EXPECT_FALSE(parseHidPosLayout(kStandard.substr(0, 20), 0));  // cut inside an item
    // Report Count (0xFFFFFFFF) of one-bit fields: refused, not expanded.
    EXPECT_FALSE(parseHidPosLayout(bytes({0x05, 0x8C, 0x75, 0x01, 0x97, 0xFF, 0xFF, 0xFF, 0xFF, 0x09, 0xFE, 0x81, 0x02}), 0));
    // Decoded Data that is not whole bytes.
    EXPECT_FALSE(parseHidPosLayout(bytes({0x05, 0x8C, 0x75, 0x04, 0x95, 0x02, 0x09, 0xFE, 0x81, 0x02}), 0));
    // Pop without push.
    EXPECT_FALSE(parseHidPosLayout(bytes({0xB4}) + kStandard, 0));
}

TEST(HidPosAssembler, OneReportEan13)
{
    for (const auto& [descriptor, vendor] : {std::pair(kStandard, 0), std::pair(kStandardWithByteCount, 0),
                                            std::pair(kHoneywellVendor, int(kHoneywellVendorId))}) {
        const HidPosLayout l = layoutOf(descriptor, vendor);
        const auto codes = assemble(l, reportsFor(l, "]E0", kEan13));
        ASSERT_EQ(codes.size(), 1u);
        EXPECT_EQ(codes[0].data, kEan13);
        EXPECT_EQ(codes[0].symbology, "]E0");
    }
    const HidPosLayout n = layoutOf(kNewlandVendor, kNewlandVendorId);
    const auto codes = assemble(n, reportsFor(n, "", kEan13));
    ASSERT_EQ(codes.size(), 1u);
    EXPECT_EQ(codes[0].data, kEan13);
    EXPECT_EQ(codes[0].symbology, "");
}

TEST(HidPosAssembler, DataMatrixOverThreeContinuedReports)
{
    const std::string code = gs1DataMatrix();
    ASSERT_EQ(code.size(), 150u);
    for (const auto& [descriptor, vendor] : {std::pair(kStandardWithByteCount, 0),
                                            std::pair(kHoneywellVendor, int(kHoneywellVendorId)),
                                            std::pair(kNewlandVendor, int(kNewlandVendorId))}) {
        const HidPosLayout l = layoutOf(descriptor, vendor);
        const auto reports = reportsFor(l, "]d2", code);
        ASSERT_EQ(reports.size(), 3u);
        const auto codes = assemble(l, reports);
        ASSERT_EQ(codes.size(), 1u);
        EXPECT_EQ(codes[0].data, code);  // GS bytes kept as 0x1D
    }
}

TEST(HidPosAssembler, BinaryBytesSurviveWithAByteCount)
{
    const HidPosLayout l = layoutOf(kStandardWithByteCount);
    const std::string data("\0\r\n\x1D\xFF\0", 6);
    const auto codes = assemble(l, reportsFor(l, "]d1", data));
    ASSERT_EQ(codes.size(), 1u);
    EXPECT_EQ(codes[0].data, data);
}

TEST(HidPosAssembler, BadReportsDropTheirCodeAndTheNextScanArrives)
{
    const HidPosLayout l = layoutOf(kStandardWithByteCount);
    auto parts = reportsFor(l, "]d2", gs1DataMatrix());
    std::string lengthPastData = reportsFor(l, "]E0", kEan13)[0];
    lengthPastData[1] = 57;
    const std::string good = reportsFor(l, "]E0", kEan13)[0];

    // A length byte past the data field.
    auto codes = assemble(l, {lengthPastData, good});
    ASSERT_EQ(codes.size(), 1u);
    EXPECT_EQ(codes[0].data, kEan13);
    // The same in the middle of a chain drops that chain up to its end, and no more.
    std::string badMiddle = parts[1];
    badMiddle[1] = static_cast<char>(0xFF);
    codes = assemble(l, {parts[0], badMiddle, parts[2], good});
    ASSERT_EQ(codes.size(), 1u);
    EXPECT_EQ(codes[0].data, kEan13);
    // A bad last report ends the chain it belongs to.
    std::string badLast = parts[2];
    badLast[1] = 57;
    codes = assemble(l, {parts[0], parts[1], badLast, good});
    ASSERT_EQ(codes.size(), 1u);
    EXPECT_EQ(codes[0].data, kEan13);
    // An empty report holds no code.
    EXPECT_TRUE(assemble(l, reportsFor(l, "]E0", "")).empty());
}

TEST(HidPosAssembler, OtherReportsLeaveTheChainAsItWas)
{
    const HidPosLayout l = layoutOf(kStandardWithStatusReport);
    EXPECT_EQ(l.reportId, 2);
    EXPECT_EQ(l.reportSize, 64u);
    const std::string status("\x03\x01\0\0", 4);
    const auto one = [&](const std::string& code) { return reportsFor(l, "]E0", code)[0]; };

    // FIRST, a status report, SECOND, THIRD: three codes.
    auto codes = assemble(l, {one("FIRST"), status, one("SECOND"), one("THIRD")});
    ASSERT_EQ(codes.size(), 3u);
    EXPECT_EQ(codes[1].data, "SECOND");
    EXPECT_EQ(codes[2].data, "THIRD");

    // A short report on its own, then one whole scan.
    codes = assemble(l, {std::string(10, '\x02'), one(kEan13)});
    ASSERT_EQ(codes.size(), 1u);
    EXPECT_EQ(codes[0].data, kEan13);

    // Inside a chain: other ids, other sizes (shorter, longer, empty) pass by.
    const auto parts = reportsFor(l, "]d2", gs1DataMatrix());
    std::string otherId = parts[1];
    otherId[0] = 4;
    codes = assemble(l, {parts[0], status, otherId, parts[1], std::string(10, '\x02'), std::string(65, '\x02'),
                         std::string(), parts[2]});
    ASSERT_EQ(codes.size(), 1u);
    EXPECT_EQ(codes[0].data, gs1DataMatrix());
    EXPECT_EQ(codes[0].symbology, "]d2");
}

TEST(HidPosAssembler, SixteenBitByteCountKeepsTrailingNuls)
{
    const HidPosLayout l = layoutOf(kStandardWith16BitByteCount);
    EXPECT_EQ(l.reportSize, 63u);
    EXPECT_EQ(l.lengthOffset, std::optional<size_t>(1));
    EXPECT_EQ(l.lengthSize, 2u);
    EXPECT_EQ(l.symbologyOffset, std::optional<size_t>(3));
    EXPECT_EQ(l.dataOffset, 6u);
    EXPECT_EQ(l.dataCapacity, 56u);
    EXPECT_EQ(l.continuedOffset, 62u);
    // A 60-byte binary code ending in NULs, over two reports.
    std::string code(58, '\x7F');
    code += std::string(2, '\0');
    const auto codes = assemble(l, reportsFor(l, "]d1", code));
    ASSERT_EQ(codes.size(), 1u);
    EXPECT_EQ(codes[0].data, code);
    // A count past the data field, in its high byte.
    std::string wide = reportsFor(l, "]E0", kEan13)[0];
    wide[2] = 1;
    EXPECT_TRUE(assemble(l, {wide}).empty());
}

TEST(HidReportDescriptor, ByteCountsOfEveryWholeByteWidth)
{
    // Report id 2: a Byte Count of 8..40 bits, then 8 bytes of Decoded Data.
    for (unsigned char bits : {8, 16, 24, 32, 40}) {
        const std::string d = bytes({0x05, 0x8C, 0x09, 0x02, 0xA1, 0x01, 0x85, 0x02, 0x75, bits, 0x95, 0x01,
                                     0x05, 0x01, 0x09, 0x3B, 0x81, 0x02, 0x05, 0x8C, 0x75, 0x08, 0x95, 0x08,
                                     0x09, 0xFE, 0x81, 0x02, 0xC0});
        const auto l = parseHidPosLayout(d, 0);
        ASSERT_TRUE(l);
        if (bits % 8 == 0 && bits <= 32) {
            EXPECT_EQ(l->lengthOffset, std::optional<size_t>(1)) << int(bits);
            EXPECT_EQ(l->lengthSize, bits / 8u);
        } else {
            EXPECT_FALSE(l->lengthOffset) << int(bits);  // not a count this driver reads: NULs trimmed instead
        }
    }
}

TEST(HidPosAssembler, WithoutAByteCountOnlyTheLastReportIsTrimmed)
{
    const HidPosLayout l = layoutOf(kStandard);
    // The first report's data ends in NULs that belong to the code.
    std::string code(50, 'A');
    code += std::string(6, '\0');
    code += "B";
    auto codes = assemble(l, reportsFor(l, "]d1", code));
    ASSERT_EQ(codes.size(), 1u);
    EXPECT_EQ(codes[0].data, code);
    // The last report's padding goes.
    codes = assemble(l, reportsFor(l, "]E0", kEan13));
    ASSERT_EQ(codes.size(), 1u);
    EXPECT_EQ(codes[0].data, kEan13);
}

TEST(HidPosAssembler, EndlessChainIsCappedAndReadingResumes)
{
    const HidPosLayout l = layoutOf(kStandardWithByteCount);
    HidPosAssembler a(l);
    std::string more = reportsFor(l, "]d2", std::string(56, 'x'))[0];
    more[63] = 1;
    for (size_t sent = 0; sent <= kMaxCodeBytes + 56; sent += 56)
        ASSERT_FALSE(a.feed(more));
    std::string last = more;
    last[63] = 0;
    EXPECT_FALSE(a.feed(last));  // the end of the over-long code: dropped whole
    const auto code = a.feed(reportsFor(l, "]E0", kEan13)[0]);
    ASSERT_TRUE(code);
    EXPECT_EQ(code->data, kEan13);
    EXPECT_EQ(code->symbology, "]E0");
}

TEST(HidPosAssembler, CapturedHoneywellVoyager1602gMessages)
{
    using namespace hidpos_captures;
    for (const std::string& descriptor : {kStandardWithByteCount, kHoneywellVendor}) {
        const auto codes = assemble(layoutOf(descriptor, kHoneywellVendorId), kVoyager1602gRevinf);
        ASSERT_EQ(codes.size(), 2u);
        EXPECT_EQ(codes[0].data, kVoyager1602gRevinfText);
        EXPECT_EQ(codes[0].symbology, "]X0");
        EXPECT_EQ(codes[1].data, kVoyager1602gRevinfAck);
        EXPECT_EQ(codes[1].symbology, "]Z6");
    }
}

TEST(PortFamily, PortsFrom193NameHidrawNodes)
{
    EXPECT_EQ(portDevicePath(193), "/dev/hidraw0");
    EXPECT_EQ(portDevicePath(195), "/dev/hidraw2");
    EXPECT_EQ(portDevicePath(192), "/dev/ttyUSB63");
    EXPECT_EQ(portShortName(193), L"hidraw0");
    EXPECT_TRUE(portFamilyOf(193)->hidPos);
    EXPECT_FALSE(portFamilyOf(129)->hidPos);
    EXPECT_EQ(portNumberOfNode(kHidPosFamily, "/dev/hidraw4"), std::optional<uint32_t>(197));
}
