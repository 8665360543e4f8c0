// A keyboard-mode scanner on a kernel event device, through the add-in and
// through ravlin-host, with no X server or one that does not show it.
#include <gtest/gtest.h>
// After gtest: X defines None.
#include <X11/extensions/XInput.h>

#include "ChildProcess.h"
#include "OrdinaryUser.h"
#include "MockInput.h"
#include "TestHost.h"
#include "WestonXwayland.h"
#include "XClient.h"
#include "XvfbServer.h"
#include "util/CharsetConversion.h"

namespace {

const std::string kTool = RAVLIN_HOST_TOOL;
const std::wstring kScannerName = L"Honeywell Imaging   Mobility 1950g";

std::wstring parametersDocument()
{
    TestHost host;
    Component c = host.create(L"InputDevice");
    const CallResult r = c.call(L"GetParameters");
    EXPECT_TRUE(r.result.boolean);
    IComponentBase* o = c.object();
    host.destroy(o);
    return r.params.empty() ? L"" : r.params[0].text;
}

}  // namespace

TEST(EvdevEvents, ScansArriveThroughTheHostWithoutAnyXServer)
{
    DisplayOverride noX("");
    MockInput devices;
    const MockKeyboard scanner = honeywellScanner();
    devices.plug(atKeyboard());
    devices.plug(scanner);
    TestHost host;
    Component c = host.create(L"InputDevice");
    ASSERT_TRUE(c.setParameter(L"Port", intVar(0)));
    ASSERT_TRUE(c.setParameter(L"KeyboardDevice", c.str(kScannerName)));
    const std::wstring id = c.open();
    ASSERT_EQ(id, L"InputDevice#1");
    devices.type(scanner, {KEY_0, KEY_1, KEY_F8, KEY_2, KEY_ENTER});
    const auto e = host.connection.waitForEvent(1);
    ASSERT_TRUE(e);
    EXPECT_EQ(e->source, L"InputDevice#1");
    EXPECT_EQ(e->name, L"Штрихкод");
    EXPECT_EQ(e->data, L"01\x1d" L"2");
    EXPECT_TRUE(c.close(id));

    ASSERT_TRUE(c.setParameter(L"KeyboardDevice", c.str(L"usb:0c2e:0b61")));
    const std::wstring byIds = c.open();
    ASSERT_FALSE(byIds.empty());
    devices.type(scanner, MockInput::keysOf("Ab\r"));
    EXPECT_THAT(host.connection.waitForEvent(2), EventData(L"Ab"));
    EXPECT_TRUE(c.close(byIds));

    ASSERT_TRUE(c.setParameter(L"KeyboardDevice", c.str(L"No such scanner")));
    EXPECT_EQ(c.open(), L"");
    IComponentBase* o = c.object();
    host.destroy(o);
    EXPECT_EQ(host.memory.liveBlocks(), 0u);
}

TEST(EvdevEvents, DocumentOffersKernelKeyboardsXDoesNotShow)
{
    DisplayOverride noX("");
    MockInput devices;
    devices.plug(honeywellScanner());
    devices.plug(atKeyboard());
    const std::wstring document = parametersDocument();
    const std::wstring scanner = L"<Item Value=\"" + kScannerName + L"\">" + kScannerName + L"</Item>";
    const std::wstring keyboard = L"<Item Value=\"AT Translated Set 2 keyboard\">AT Translated Set 2 keyboard</Item>";
    ASSERT_NE(document.find(keyboard), std::wstring::npos) << wstr2str(document);
    EXPECT_LT(document.find(keyboard), document.find(scanner)) << "in node order";
}

TEST(EvdevEvents, DocumentIsUnchangedWhenXListsTheSameKeyboards)
{
    XvfbServer x;
    MockInput devices;
    const std::wstring before = parametersDocument();
    devices.plug({5, "Xvfb keyboard", ""});  // the name X lists for its keyboard
    EXPECT_EQ(parametersDocument(), before);
    devices.plug(honeywellScanner());
    const std::wstring after = parametersDocument();
    EXPECT_NE(after.find(kScannerName), std::wstring::npos);
}

TEST(EvdevEvents, PortsShowKernelKeyboardsAndWhetherTheyOpen)
{
    DisplayOverride noX("");
    MockInput devices;
    devices.plug(atKeyboard());
    devices.plug(honeywellScanner());
    auto [out, status] = ChildProcess::run({kTool, "ports"});
    EXPECT_EQ(status, 0) << out;
    EXPECT_NE(out.find("  /dev/input/event3\tAT Translated Set 2 keyboard\t-\tyes\n"), std::string::npos) << out;
    EXPECT_NE(out.find("  /dev/input/event12\tHoneywell Imaging   Mobility 1950g\tusb:0c2e:0b61\tyes\n"),
              std::string::npos)
        << out;

    devices.holdElsewhere(honeywellScanner());
    std::tie(out, status) = ChildProcess::run({kTool, "ports"});
    EXPECT_NE(out.find("usb:0c2e:0b61\tno: held by another program\n"), std::string::npos) << out;
}

TEST(EvdevEvents, AUserWithoutPermissionCannotOpenAndPortsSayWhy)
{
    DisplayOverride noX("");
    MockInput devices;
    devices.plug(honeywellScanner());
    devices.nodesForRootOnly();
    auto [out, status] =
        ChildProcess::run(ravlinHostAsOrdinaryUser(kTool, {"ports"}));
    EXPECT_EQ(status, 0) << out;
    EXPECT_NE(out.find("usb:0c2e:0b61\tno: no permission (see ravlin-host udev-rule)\n"), std::string::npos) << out;

    // Open fails for that user (exit status 1).
    std::tie(out, status) = ChildProcess::run(ravlinHostAsOrdinaryUser(
        kTool, {"listen", "--set", "Port=0", "--set", "KeyboardDevice=usb:0c2e:0b61", "--count", "1", "--timeout", "5"}));
    EXPECT_EQ(status, 1) << out;
}

TEST(EvdevEvents, UdevRuleForAScannerByNameOrIds)
{
    MockInput devices;
    devices.plug(atKeyboard());
    devices.plug(honeywellScanner());
    const std::string rule =
        "SUBSYSTEM==\"input\", KERNEL==\"event*\", ATTRS{idVendor}==\"0c2e\", ATTRS{idProduct}==\"0b61\", "
        "TAG+=\"uaccess\"\n";
    auto [out, status] = ChildProcess::run({kTool, "udev-rule", "usb:0C2E:0B61"});
    EXPECT_EQ(status, 0) << out;
    EXPECT_NE(out.find(rule), std::string::npos) << out;
    EXPECT_EQ(out.find("input\", GROUP"), std::string::npos);
    std::tie(out, status) = ChildProcess::run({kTool, "udev-rule", "Honeywell Imaging   Mobility 1950g"});
    EXPECT_NE(out.find(rule), std::string::npos) << out;
    // As the user types it: blanked as the listed name is.
    std::tie(out, status) = ChildProcess::run({kTool, "udev-rule", "Honeywell Imaging & Mobility 1950g"});
    EXPECT_EQ(status, 0) << out;
    EXPECT_NE(out.find(rule), std::string::npos) << out;

    std::tie(out, status) = ChildProcess::run({kTool, "udev-rule", "AT Translated Set 2 keyboard"});
    EXPECT_EQ(status, 1);
    EXPECT_NE(out.find("is not a USB device"), std::string::npos) << out;
    std::tie(out, status) = ChildProcess::run({kTool, "udev-rule", "nothing"});
    EXPECT_EQ(status, 1);
}

// Cheap USB devices put control bytes in their names; the form cannot carry
// them, so they are blanked like markup wherever a name is shown or compared.
TEST(EvdevEvents, ControlCharactersInANameAreBlanked)
{
    DisplayOverride noX("");
    MockInput devices;
    const MockKeyboard cheap{7, "USB\x01" "Barcode\x1b" "Scanner", "1a2b:3c4d"};
    devices.plug(cheap);
    devices.plug(honeywellScanner());
    EXPECT_NE(parametersDocument().find(L"<Item Value=\"USB Barcode Scanner\">USB Barcode Scanner</Item>"),
              std::wstring::npos);
    auto [out, status] = ChildProcess::run({kTool, "ports"});
    EXPECT_EQ(status, 0) << out;
    EXPECT_NE(out.find("  USB Barcode Scanner\tUSB Barcode Scanner\n"), std::string::npos) << out;  // a KeyboardDevice choice
    EXPECT_NE(out.find("  /dev/input/event7\tUSB Barcode Scanner\tusb:1a2b:3c4d\tyes\n"), std::string::npos) << out;
    std::tie(out, status) = ChildProcess::run({kTool, "udev-rule", cheap.name});
    EXPECT_EQ(status, 0) << out;
    EXPECT_NE(out.find("ATTRS{idVendor}==\"1a2b\", ATTRS{idProduct}==\"3c4d\""), std::string::npos) << out;
    // Opened by the name as the device gives it, and by the blanked one.
    for (const std::string& name : {cheap.name, std::string("USB Barcode Scanner")}) {
        std::tie(out, status) = ChildProcess::run({kTool, "listen", "--set", "Port=0", "--set", "KeyboardDevice=" + name,
                                                   "--count", "0", "--timeout", "1"});
        EXPECT_EQ(status, 0) << out;
    }
}

TEST(EvdevEvents, UnderXwaylandTheScannerIsReadFromTheKernel)
{
    WestonXwayland session;
    MockInput devices;
    const MockKeyboard scanner = honeywellScanner();
    devices.plug(scanner);

    // X shows its clients Xwayland's virtual keyboard only, which must never be grabbed.
    XClient x;
    std::string virtualKeyboard;
    int count = 0;
    XDeviceInfo* listed = XListInputDevices(x.display(), &count);
    for (int i = 0; i < count; ++i)
        if (std::string(listed[i].name).rfind("xwayland-keyboard", 0) == 0)
            virtualKeyboard = listed[i].name;
    XFreeDeviceList(listed);
    ASSERT_FALSE(virtualKeyboard.empty()) << "Xwayland lists no keyboard of its own";
    const int virtualId = x.devicesNamed(virtualKeyboard).at(0);

    TestHost host;
    Component c = host.create(L"InputDevice");
    ASSERT_TRUE(c.setParameter(L"Port", intVar(0)));
    ASSERT_TRUE(c.setParameter(L"KeyboardDevice", c.str(str2wstr(virtualKeyboard))));
    EXPECT_EQ(c.open(), L"");
    EXPECT_TRUE(x.grabSucceeds(virtualId)) << "the user's keyboard stays free";

    ASSERT_TRUE(c.setParameter(L"KeyboardDevice", c.str(kScannerName)));
    const std::wstring id = c.open();
    ASSERT_FALSE(id.empty());
    devices.type(scanner, MockInput::keysOf("0123\r"));
    EXPECT_THAT(host.connection.waitForEvent(1), EventData(L"0123"));
    EXPECT_TRUE(c.close(id));
    IComponentBase* o = c.object();
    host.destroy(o);
}
