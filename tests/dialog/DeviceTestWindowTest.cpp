// The device test window under a real X server, driven as a person would:
// pointer clicks through XTest, the clipboard read back with xclip.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <thread>

#include "ChildProcess.h"
#include "ComponentFixture.h"
#include "ElfInfo.h"
#include "FirstScanInWindow.h"
#include "TestHost.h"
#include "TestUtil.h"
#include "VirtualSerialPort.h"
#include "XClient.h"
#include "XvfbServer.h"
#include "dialog/DevTestDialogLinux.h"
#include "input/PortFamily.h"

using namespace std::chrono_literals;

namespace {

// Where a person would click, measured from the window's top-left corner
// (buttons from its right edge): the toolkits' default themes differ.
struct Layout {
    int firstRowY;
    int buttonsFromRight;
    int closeY, clearY, copyY;
};

struct HostKind {
    const char* name;
    const char* program;
    Layout layout;
};

const HostKind kHosts[] = {
    {"plain", DEVICE_TEST_HOST, {42, 57, 20, 57, 94}},
    {"gtk3", GTK3_DEVICE_TEST_HOST, {48, 60, 22, 66, 110}},
};

// The toolkit's own leaks and races are not ours to report, also when this
// program is run by hand rather than by ctest.
const std::vector<std::string> kSanitizerSettings = {
    "LSAN_OPTIONS=suppressions=" RAVLIN_TEST_DATA "/dialog/lsan.supp",
    "TSAN_OPTIONS=suppressions=" RAVLIN_TEST_DATA "/tsan.supp"};

class DeviceTestWindow : public ::testing::TestWithParam<HostKind> {};

}  // namespace

TEST_P(DeviceTestWindow, ListsCopiesClearsAndCloses)
{
    const HostKind& kind = GetParam();
    XvfbServer server;
    VirtualSerialPort usb("ttyUSB1");
    XClient x;
    ChildProcess host({kind.program}, kSanitizerSettings);

    const Window window = x.waitForWindow("Тест устройства");
    ASSERT_NE(window, 0u) << "the window did not appear";
    int wx, wy, width, height;
    x.geometry(window, wx, wy, width, height);
    EXPECT_GE(width, 600);
    EXPECT_GE(height, 400);
    const Layout& at = kind.layout;
    const int buttonX = wx + width - at.buttonsFromRight;

    // The window listens to the X keyboard without taking it from anyone.
    const auto keyboards = x.devicesNamed("Xvfb keyboard");
    ASSERT_FALSE(keyboards.empty());
    EXPECT_TRUE(x.grabSucceeds(keyboards[0]));

    // A code with no suffix at all: the window's serial sources end codes on a pause.
    EXPECT_EQ(copyRowOnceListed(x, wx + 150, wy + at.firstRowY, buttonX, wy + at.copyY,
                                [&] { usb.write("0104\x1D" "21AB"); }),
              "0104 'GS' 21AB");

    mkdir(RAVLIN_ARTIFACT_DIR, 0755);
    const std::string shot = std::string(RAVLIN_ARTIFACT_DIR "/device-test") +
                             (std::string(kind.name) == "plain" ? "" : std::string("-") + kind.name) + ".png";
    runCommand("import -display " + server.display() + " -window root " + shot);

    // Clear empties the list: the same clicks now select nothing and copy nothing.
    x.click(buttonX, wy + at.clearY);
    x.click(wx + 150, wy + at.firstRowY);
    x.click(buttonX, wy + at.copyY);
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(clipboardText(), "0104 'GS' 21AB");

    const auto closing = std::chrono::steady_clock::now();
    x.click(buttonX, wy + at.closeY);
    const std::string result = host.readLine();
    std::printf("%s host: Close click to DeviceTest's return %.1f ms\n", kind.name,
                std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - closing).count());
    EXPECT_EQ(result.rfind("DeviceTest returned 1 result 1", 0), 0u) << result;
    if (std::string(kind.name) == "gtk3") {
        EXPECT_NE(result.find("gtk 3"), std::string::npos);
    }
    // The copied code outlives the window for as long as the host runs.
    EXPECT_EQ(clipboardText(), "0104 'GS' 21AB");
    host.closeInput();
    EXPECT_EQ(host.wait(), 0);
}

INSTANTIATE_TEST_SUITE_P(Hosts, DeviceTestWindow, ::testing::ValuesIn(kHosts),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(DeviceTestWindowNoSerialNodes, StillOpensAndCloses)
{
    XvfbServer server;
    XClient x;
    ChildProcess host({DEVICE_TEST_HOST}, kSanitizerSettings);
    const Window window = x.waitForWindow("Тест устройства");
    ASSERT_NE(window, 0u);
    int wx, wy, width, height;
    x.geometry(window, wx, wy, width, height);
    const Layout& at = kHosts[0].layout;
    x.click(wx + width - at.buttonsFromRight, wy + at.closeY);
    EXPECT_EQ(host.readLine().rfind("DeviceTest returned 1 result 1", 0), 0u);
    host.closeInput();
    EXPECT_EQ(host.wait(), 0);
}

TEST(DeviceTestWindowWithoutServer, ReturnsTrueAndShowsNothing)
{
    DisplayOverride none("");
    ChildProcess host({DEVICE_TEST_HOST}, kSanitizerSettings);
    EXPECT_EQ(host.readLine().rfind("DeviceTest returned 1 result 1", 0), 0u);
    host.closeInput();
    EXPECT_EQ(host.wait(), 0);
}

TEST(DeviceTestWindowLibrary, NoToolkitLinkedIn)
{
    for (const std::string& needed : neededLibraries(testedLibrary()))
        for (const char* toolkit : {"gtk", "gdk", "glib", "gobject", "gio"})
            EXPECT_EQ(needed.find(toolkit), std::string::npos) << needed;
}

TEST(DeviceTestWindowLines, SourceNamesAndDisplayForms)
{
    EXPECT_EQ(portShortName(1), L"COM1");
    EXPECT_EQ(portShortName(65), L"ACM1");
    EXPECT_EQ(portShortName(129), L"USB1");
    EXPECT_EQ(portShortName(130), L"USB2");
    EXPECT_EQ(portShortName(64), L"COM64");
    EXPECT_EQ(portShortName(0), L"");
    // A hidraw port by its node, as the form ("hidraw2: ...") and ravlin-host ports name Port 195.
    EXPECT_EQ(portShortName(195), L"hidraw2");
    EXPECT_EQ(portShortName(193), L"hidraw0");
    // A HID POS scan names its symbology beside the port; a layout without one does not.
    EXPECT_EQ(DevTestDialogLinux::scannerSourceName(portShortName(195), "]d2"), L"hidraw2 ]d2");
    EXPECT_EQ(DevTestDialogLinux::scannerSourceName(portShortName(193), ""), L"hidraw0");
    // A scan on the second USB adapter, text form.
    EXPECT_EQ(DevTestDialogLinux::formatLine(L"USB2", L"MTIzDQ==", OutputDataType(0)),
              std::make_pair(std::string("USB2:"), std::string("123 'CR' ")));
    // Base64 form: the text itself, through the symbol formatter.
    EXPECT_EQ(DevTestDialogLinux::formatLine(L"COM1", L"MTIz", OutputDataType(2)), std::make_pair(std::string("COM1:"), std::string("MTIz")));
    EXPECT_EQ(DevTestDialogLinux::formatLine(L"Xvfb keyboard", L"HTE=", OutputDataType(1)),
              std::make_pair(std::string("Xvfb keyboard:"), std::string("(029)")));
}

TEST(DeviceTestWindowLines, CaptionsInBothLanguages)
{
    const DevTestDialogLinux ru({}, {}, true, OutputDataType::Text), en({}, {}, false, OutputDataType::Text);
    EXPECT_EQ(ru.LoadString(DevTestDialogLinux::Close), "Закрыть");
    EXPECT_EQ(ru.LoadString(DevTestDialogLinux::Clear), "Очистить");
    EXPECT_EQ(ru.LoadString(DevTestDialogLinux::Copy), "Копировать");
    EXPECT_EQ(ru.LoadString(DevTestDialogLinux::Title), "Тест устройства");
    EXPECT_EQ(ru.LoadString(DevTestDialogLinux::Timeout), "Таймаут");
    EXPECT_EQ(en.LoadString(DevTestDialogLinux::Close), "Close");
    EXPECT_EQ(en.LoadString(DevTestDialogLinux::Clear), "Clear");
    EXPECT_EQ(en.LoadString(DevTestDialogLinux::Copy), "Copy");
    EXPECT_EQ(en.LoadString(DevTestDialogLinux::Title), "Device test");
    EXPECT_EQ(en.LoadString(DevTestDialogLinux::Timeout), "Timeout");
    EXPECT_EQ(en.LoadString(static_cast<DevTestDialogLinux::STRING_ID>(9)), "");
    EXPECT_TRUE(ru.IsRussian());
    EXPECT_FALSE(en.IsRussian());
}

using DeviceTestWindowHeldLine = ComponentFixture;

TEST_F(DeviceTestWindowHeldLine, IsListedAsBusy)
{
    XvfbServer server;
    VirtualSerialPort usb("ttyUSB1");
    Component c = makeOnPort(130);
    const std::wstring id = c.open();
    ASSERT_FALSE(id.empty());
    XClient x;
    EXPECT_EQ(copyFirstScanInWindow(x, [] {}), "порт занят другой программой");
    // The host's reader kept the line all along.
    EXPECT_THAT(scan(usb, "7\r"), EventData(L"7"));
    EXPECT_TRUE(c.close(id));
}
