// The HID POS reader on hidraw nodes emulated by umockdev.
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <filesystem>
#include <set>
#include <thread>
#include <vector>

#include "CodeSink.h"
#include "HidPosCaptures.h"
#include "HidPosDescriptors.h"
#include "HidPosReports.h"
#include "HidrawTestbed.h"
#include "TestUtil.h"
#include "input/HidrawNode.h"
#include "input/InputDeviceComPortFactory.h"
#include "input/PortFamily.h"
#include "util/SymbolCodecs.h"

using namespace std::chrono_literals;
using namespace hidpos_descriptors;

namespace {

const std::string kEan13 = "4006381333931";

std::string gs1DataMatrix()
{
    std::string code = "010465011724040821" "5'kT9mBqX>&cz\x1D" "91EE06\x1D" "92";
    while (code.size() < 150)
        code += static_cast<char>('a' + code.size() % 26);
    return code;
}

const HidrawTestbed::Device kHoneywell{kHoneywellVendorId, 0x0B87, "21013B0F42", "Honeywell Xenon 1950g", kStandardWithByteCount};
const HidrawTestbed::Device kStandardScanner{0x05E0, 0x1900, "S42", "Symbol Bar Code Scanner", kStandard};
const HidrawTestbed::Device kHoneywellVendorMode{kHoneywellVendorId, 0x0B01, "V7", "HHP Scanner", kHoneywellVendor};
const HidrawTestbed::Device kNewland{kNewlandVendorId, 0x0D10, "N1", "Newland FM420", kNewlandVendor};
const HidrawTestbed::Device kMouseDevice{0x046D, 0xC077, "", "Logitech USB Optical Mouse", kMouse};

class HidPosReader : public ::testing::Test {
protected:
    std::unique_ptr<InputDevice> open(unsigned node, CodeSink& sink)
    {
        DeviceSettings settings;
        settings.port = kHidPosFamily.base + node;
        return InputDeviceComPortFactory().create(settings, sink.callback());
    }
    // Sends one code the way the device's layout cuts it into reports.
    void scan(unsigned node, const HidrawTestbed::Device& d, const std::string& symbology, const std::string& code)
    {
        const auto layout = parseHidPosLayout(d.descriptor, d.vendorId);
        ASSERT_TRUE(layout);
        std::string stream;
        for (const std::string& r : reportsFor(*layout, symbology, code))
            stream += r;
        bed.send(node, stream);
    }
    // One report as a kernel node hands it over, alone in one read: the
    // emulated node is a pseudo-terminal, which keeps no boundaries, so the
    // next is written only once the reader's thread has read this one.
    void sendReport(unsigned node, const std::string& report, pid_t reader)
    {
        const unsigned long long before = threadBytesRead(reader);
        bed.send(node, report);
        ASSERT_TRUE(waitUntil([&] { return threadBytesRead(reader) >= before + report.size(); }));
    }

    HidrawTestbed bed;
};

// Whether a descriptor of this process is open on the file.
bool openInThisProcess(const std::string& file)
{
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        if (std::filesystem::read_symlink(entry.path(), error) == file)
            return true;
    }
    return false;
}

// Drops this thread's power to open files regardless of their permissions,
// as an ordinary user has none; the rest of the process keeps it.
void withoutFileCapabilities(const std::function<void()>& body)
{
    std::thread([&] {
        __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
        __user_cap_data_struct data[2]{};
        ASSERT_EQ(syscall(SYS_capget, &header, data), 0);
        for (int cap : {CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH, CAP_FOWNER})
            data[cap / 32].effective &= ~(1u << (cap % 32));
        ASSERT_EQ(syscall(SYS_capset, &header, data), 0);
        body();
    }).join();
}

}  // namespace

TEST_F(HidPosReader, OneReportEan13OnTheStandardPage)
{
    bed.plug(0, kStandardScanner);
    CodeSink sink;
    auto source = open(0, sink);
    ASSERT_TRUE(source);
    scan(0, kStandardScanner, "]E0", kEan13);
    EXPECT_EQ(sink.waitFor(1), std::vector<std::wstring>{b64(kEan13)});
}

TEST_F(HidPosReader, DataMatrixOverThreeContinuedReportsKeepsItsGroupSeparators)
{
    bed.plug(1, kHoneywell);
    CodeSink sink;
    auto source = open(1, sink);
    ASSERT_TRUE(source);
    const std::string code = gs1DataMatrix();
    ASSERT_EQ(code.size(), 150u);
    scan(1, kHoneywell, "]d2", code);
    scan(1, kHoneywell, "]E0", kEan13);
    const auto codes = sink.waitFor(2);
    ASSERT_EQ(codes.size(), 2u);
    EXPECT_EQ(base642Raw(std::string(codes[0].begin(), codes[0].end())), code);
    EXPECT_EQ(codes[1], b64(kEan13));
}

TEST_F(HidPosReader, EachVendorLayout)
{
    bed.plug(2, kHoneywellVendorMode);
    bed.plug(3, kNewland);
    CodeSink honeywell, newland;
    auto a = open(2, honeywell);
    auto b = open(3, newland);
    ASSERT_TRUE(a);
    ASSERT_TRUE(b);
    scan(2, kHoneywellVendorMode, "]Q0", gs1DataMatrix());
    scan(3, kNewland, "", kEan13);
    EXPECT_EQ(honeywell.waitFor(1), std::vector<std::wstring>{b64(gs1DataMatrix())});
    EXPECT_EQ(newland.waitFor(1), std::vector<std::wstring>{b64(kEan13)});
}

// The vendor-defined layout under another maker's id (Access IS; the product
// id and name are made up).
TEST_F(HidPosReader, VendorLayoutUnderAnotherMakersId)
{
    const HidrawTestbed::Device accessIs{0x0DB5, 0x0001, "AIS1", "Access IS 2D scanner", kHoneywellVendor};
    bed.plug(15, accessIs);
    CodeSink sink;
    auto source = open(15, sink);
    ASSERT_TRUE(source);
    scan(15, accessIs, "]d2", gs1DataMatrix());
    EXPECT_EQ(sink.waitFor(1), std::vector<std::wstring>{b64(gs1DataMatrix())});
}

// Reports a real Honeywell Voyager 1602g sent (HidPosCaptures.h has the
// source), one per read, under both descriptors that fit them.
TEST_F(HidPosReader, CapturedHoneywellVoyager1602gReportsArriveAsTwoCodes)
{
    using namespace hidpos_captures;
    unsigned node = 16;
    for (const std::string& descriptor : {kStandardWithByteCount, kHoneywellVendor}) {
        const HidrawTestbed::Device scanner{kHoneywellVendorId, 0x0000, "15232B1F0C", "Honeywell Voyager 1602g",
                                            descriptor};
        bed.plug(node, scanner);
        CodeSink sink;
        auto source = open(node, sink);
        ASSERT_TRUE(source);
        scan(node, scanner, "]E0", kEan13);  // a scan first: its delivery names the reader's thread
        ASSERT_EQ(sink.waitFor(1).size(), 1u);
        for (const std::string& report : kVoyager1602gRevinf)
            sendReport(node, report, sink.readerThread());
        EXPECT_EQ(sink.waitFor(3), (std::vector<std::wstring>{b64(kEan13), b64(kVoyager1602gRevinfText),
                                                              b64(kVoyager1602gRevinfAck)}));
        ++node;
    }
}

TEST_F(HidPosReader, TwoScannersAtOnceEachOnItsOwnThread)
{
    bed.plug(4, kHoneywell);
    bed.plug(5, kStandardScanner);
    CodeSink first, second;
    auto a = open(4, first);
    auto b = open(5, second);
    ASSERT_TRUE(a && b);
    for (int i = 0; i < 20; ++i) {
        scan(4, kHoneywell, "]E0", "A" + std::to_string(i));
        scan(5, kStandardScanner, "]E0", "B" + std::to_string(i));
    }
    const auto x = first.waitFor(20), y = second.waitFor(20);
    ASSERT_EQ(x.size(), 20u);
    ASSERT_EQ(y.size(), 20u);
    EXPECT_EQ(x[19], b64("A19"));
    EXPECT_EQ(y[19], b64("B19"));
    EXPECT_NE(first.readerThread(), second.readerThread());
}

// Each read of a kernel node is one report: a status report between scans, or
// a short report alone, is another report and costs no scan.
TEST_F(HidPosReader, OtherReportsBetweenScansLoseNothing)
{
    const HidrawTestbed::Device scanner{kHoneywellVendorId, 0x0B87, "ST1", "Honeywell Xenon 1950g",
                                        kStandardWithStatusReport};
    bed.plug(13, scanner);
    CodeSink sink;
    auto source = open(13, sink);
    ASSERT_TRUE(source);
    const HidPosLayout layout = *parseHidPosLayout(scanner.descriptor, scanner.vendorId);
    const auto report = [&](const std::string& code) { return reportsFor(layout, "]E0", code)[0]; };
    bed.send(13, report("FIRST"));
    ASSERT_EQ(sink.waitFor(1).size(), 1u);
    const pid_t reader = sink.readerThread();
    sendReport(13, std::string("\x03\x01\0\0", 4), reader);
    sendReport(13, report("SECOND"), reader);
    sendReport(13, report("THIRD"), reader);
    sendReport(13, std::string(10, '\x02'), reader);
    sendReport(13, report(kEan13), reader);
    const auto parts = reportsFor(layout, "]d2", gs1DataMatrix());
    sendReport(13, parts[0], reader);
    sendReport(13, std::string("\x03\x02\0\0", 4), reader);
    sendReport(13, parts[1], reader);
    sendReport(13, parts[2], reader);
    EXPECT_EQ(sink.waitFor(5), (std::vector<std::wstring>{b64("FIRST"), b64("SECOND"), b64("THIRD"), b64(kEan13),
                                                          b64(gs1DataMatrix())}));
}

TEST_F(HidPosReader, AScanReportWithALengthPastItsDataDropsItsCodeAndTheNextScanArrives)
{
    bed.plug(14, kHoneywell);
    CodeSink sink;
    auto source = open(14, sink);
    ASSERT_TRUE(source);
    const HidPosLayout layout = *parseHidPosLayout(kHoneywell.descriptor, kHoneywell.vendorId);
    auto parts = reportsFor(layout, "]d2", gs1DataMatrix());
    parts[1][1] = static_cast<char>(0xFF);
    std::string stream = parts[0] + parts[1] + parts[2];
    for (const std::string& r : reportsFor(layout, "]E0", kEan13))
        stream += r;
    bed.send(14, stream);
    EXPECT_EQ(sink.waitFor(1), std::vector<std::wstring>{b64(kEan13)});
}

TEST_F(HidPosReader, WhatIsNotAScannerDoesNotOpen)
{
    bed.plug(6, kMouseDevice);
    CodeSink sink;
    EXPECT_FALSE(open(6, sink));  // a mouse
    EXPECT_FALSE(open(7, sink));  // no such node
    const auto nodes = HidrawNode::list();
    ASSERT_EQ(nodes.size(), 1u);
    EXPECT_EQ(nodes[0].product, "Logitech USB Optical Mouse");
    EXPECT_FALSE(nodes[0].layout);
}

TEST_F(HidPosReader, PermissionDeniedFailsTheOpen)
{
    bed.plug(8, kStandardScanner);
    ASSERT_EQ(chmod(bed.nodeFile(8).c_str(), 0), 0);
    CodeSink sink;
    bool opened = true;
    withoutFileCapabilities([&] { opened = static_cast<bool>(open(8, sink)); });
    EXPECT_FALSE(opened);
    ASSERT_EQ(chmod(bed.nodeFile(8).c_str(), 0600), 0);
    EXPECT_TRUE(open(8, sink));  // the same node with access: the refusal was the permission
}

TEST_F(HidPosReader, UnplugAndReplugUnderAnotherNode)
{
    bed.plug(9, kHoneywell);
    CodeSink sink;
    auto source = open(9, sink);
    ASSERT_TRUE(source);
    scan(9, kHoneywell, "]E0", "before");
    ASSERT_EQ(sink.waitFor(1).size(), 1u);
    const pid_t reader = sink.readerThread();
    const double cpuBefore = threadCpuSeconds(reader);

    const std::string node = bed.nodeTarget(9);
    ASSERT_TRUE(openInThisProcess(node));
    bed.unplug(9);
    // Closed on udev's word: an emulated node, like some real ones, never
    // reports its removal to a reader.
    EXPECT_TRUE(waitUntil([&] { return !openInThisProcess(node); }));
    std::this_thread::sleep_for(1s);
    EXPECT_LT(threadCpuSeconds(reader) - cpuBefore, 0.05);  // waiting, not spinning

    bed.plug(10, kStandardScanner);  // another device: not ours
    bed.plug(11, kHoneywell);        // ours, under another number
    std::this_thread::sleep_for(700ms);
    scan(10, kStandardScanner, "]E0", "stranger");
    scan(11, kHoneywell, "]E0", "after");
    const auto codes = sink.waitFor(2);
    ASSERT_EQ(codes.size(), 2u);
    EXPECT_EQ(codes[1], b64("after"));
}

TEST_F(HidPosReader, CloseJoinsTheThreadAndClosesTheNode)
{
    bed.plug(12, kHoneywell);
    // What they are, not how many: GLib under umockdev starts and ends threads
    // and descriptors of its own at any time.
    const auto before = openDescriptors();
    pid_t reader = 0;
    std::vector<std::pair<int, std::string>> opened;
    {
        CodeSink sink;
        auto source = open(12, sink);
        ASSERT_TRUE(source);
        scan(12, kHoneywell, "]E0", "1");
        ASSERT_EQ(sink.waitFor(1).size(), 1u);
        reader = sink.readerThread();
        for (const auto& descriptor : openDescriptors())
            if (!before.count(descriptor))
                opened.push_back(descriptor);
        ASSERT_FALSE(opened.empty());
    }
    // Joined: the kernel drops a joined thread's entry within moments of the join.
    EXPECT_TRUE(waitUntil([&] { return threadIds().count(reader) == 0; }));
    // umockdev's own thread serves each open of an emulated node on a socket
    // of this process and closes its end a moment after the node is closed.
    EXPECT_TRUE(waitUntil([&] {
        const auto now = openDescriptors();
        for (const auto& descriptor : opened)
            if (now.count(descriptor))
                return false;
        return true;
    })) << opened.size() << " descriptors opened with the source";
}
