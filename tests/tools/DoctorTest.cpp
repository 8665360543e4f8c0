// ravlin-host doctor against each cause of a scanner that does not work: USB
// devices in a umockdev testbed, serial lines as pseudo-terminals under their
// /dev names, the udev rules folders empty tmpfs of this run's own.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <umockdev.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "ChildProcess.h"
#include "HidPosDescriptors.h"
#include "HidPosReports.h"
#include "HidrawTestbed.h"
#include "MockInput.h"
#include "OrdinaryUser.h"
#include "VirtualSerialPort.h"
#include "WestonXwayland.h"
#include "XvfbServer.h"
#include "input/HidReportDescriptor.h"

namespace {

const std::string kTool = RAVLIN_HOST_TOOL;

// The rules folders doctor reads, each an empty tmpfs for this program (it
// runs in a mount namespace of its own): the machine's rules never count.
class PrivateRulesFolders : public ::testing::Environment {
public:
    void SetUp() override
    {
        for (const char* folder : {"/etc/udev/rules.d", "/run/udev/rules.d", "/usr/local/lib/udev/rules.d",
                                   "/usr/lib/udev/rules.d", "/lib/udev/rules.d"}) {
            std::error_code error;
            if (std::filesystem::is_directory(folder, error)) {
                ASSERT_EQ(mount("tmpfs", folder, "tmpfs", 0, "mode=0755,size=1m"), 0) << folder;
            }
        }
        unsetenv("WAYLAND_DISPLAY");
    }
};
const auto* const kRules = ::testing::AddGlobalTestEnvironment(new PrivateRulesFolders);

// A USB serial device in a testbed of its own: the USB device, its interface
// and (unless the tty is empty) its tty, whose node is the pseudo-terminal the
// private /dev names.
struct UsbSerial {
    std::string tty, vendor, product, maker, driver;
    bool modemManagerIgnores = false;
};

class SerialTestbed {
public:
    SerialTestbed() : testbed(umockdev_testbed_new()) {}
    ~SerialTestbed() { g_object_unref(testbed); }

    void plug(int n, const UsbSerial& d)
    {
        const std::string usb = "/devices/pci0000:00/0000:00:14.0/usb1/1-" + std::to_string(n);
        const std::string interface = usb + "/1-" + std::to_string(n) + ":1.0";
        std::string tree = "P: " + usb + "\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\nA: idVendor=" + d.vendor +
                           "\nA: idProduct=" + d.product + "\nA: manufacturer=" + d.maker + "\n\nP: " + interface +
                           "\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_interface\nE: DRIVER=" + d.driver +
                           "\nA: bInterfaceClass=" + (d.driver == "cdc_acm" ? "02" : "ff") + "\n";
        if (!d.tty.empty())
            tree += "\nP: " + interface + "/tty/" + d.tty + "\nE: SUBSYSTEM=tty\nE: DEVNAME=/dev/" + d.tty +
                    "\nE: ID_USB_DRIVER=" + d.driver + (d.modemManagerIgnores ? "\nE: ID_MM_DEVICE_IGNORE=1" : "") +
                    "\n";
        GError* error = nullptr;
        ASSERT_TRUE(umockdev_testbed_add_from_string(testbed, tree.c_str(), &error)) << (error ? error->message : "");
    }

    // An ordinary user reads the devices' sysfs and udev data as on a real machine.
    void readableByEveryone()
    {
        gchar* root = umockdev_testbed_get_root_dir(testbed);
        const std::string command = "chmod -R a+rwX '" + std::string(root) + "'";
        g_free(root);
        ASSERT_EQ(std::system(command.c_str()), 0);
    }

private:
    UMockdevTestbed* testbed;
};

const UsbSerial kHoneywellAcm{"ttyACM0", "0c2e", "0b61", "Honeywell", "cdc_acm"};
const UsbSerial kHoneywellAcmMarked{"ttyACM0", "0c2e", "0b61", "Honeywell", "cdc_acm", true};
const UsbSerial kCh340{"ttyUSB0", "1a86", "7523", "", "ch341"};

std::pair<std::string, int> doctor(const std::vector<std::string>& args = {})
{
    std::vector<std::string> argv = {kTool, "doctor"};
    argv.insert(argv.end(), args.begin(), args.end());
    return ChildProcess::run(argv);
}

// A process named ModemManager: a copy of sleep under that name.
class FakeModemManager {
public:
    FakeModemManager()
    {
        char dir[] = "/tmp/ravlin-mm-XXXXXX";
        folder = mkdtemp(dir);
        std::filesystem::copy_file("/bin/sleep", folder + "/ModemManager");
        process = std::make_unique<ChildProcess>(std::vector<std::string>{folder + "/ModemManager", "3600"});
    }
    ~FakeModemManager()
    {
        process.reset();
        std::filesystem::remove_all(folder);
    }

private:
    std::string folder;
    std::unique_ptr<ChildProcess> process;
};

// The doctor's output up to the line that holds `needle` (or to the time-out).
std::string outputUntil(ChildProcess& tool, const std::string& needle)
{
    std::string out;
    for (std::string line; !(line = tool.readLine()).empty();) {
        out += line + "\n";
        if (line.find(needle) != std::string::npos)
            break;
    }
    return out;
}

// doctor --scan, listening: ended by SIGTERM, as by Ctrl+C.
class ScanningDoctor {
public:
    ScanningDoctor() : tool({kTool, "doctor", "--scan", "600"}, {}, true) { outputUntil(tool, "scan a code now"); }
    std::string readUntil(const std::string& needle) { return outputUntil(tool, needle); }
    int stop()
    {
        kill(tool.id(), SIGTERM);
        return tool.wait();
    }

private:
    ChildProcess tool;
};

std::string contains(const std::string& out, const std::string& text)
{
    return out.find(text) != std::string::npos ? std::string() : "missing: " + text + "\nin:\n" + out;
}
#define EXPECT_HAS(out, text) EXPECT_EQ(contains(out, text), "")

}  // namespace

TEST(Doctor, ModemManagerOnACdcAcmScannerNotMarkedToBeIgnored)
{
    DisplayOverride noX("");
    SerialTestbed bed;
    bed.plug(1, kHoneywellAcm);
    UsbSerial ignored = kHoneywellAcm;
    ignored.tty = "ttyACM1";
    ignored.modemManagerIgnores = true;
    bed.plug(2, ignored);
    VirtualSerialPort acm0("ttyACM0"), acm1("ttyACM1");
    FakeModemManager modemManager;
    const auto [out, status] = doctor();
    EXPECT_EQ(status, 0) << out;
    EXPECT_HAS(out, "info    session: no X display");
    EXPECT_HAS(out, "ok      /dev/ttyACM0: CDC-ACM serial, usb:0c2e:0b61 Honeywell; Port=65; this user can read it\n");
    EXPECT_HAS(out, "problem /dev/ttyACM0: ModemManager (PID ");
    EXPECT_HAS(out, "fix: echo 'SUBSYSTEMS==\"usb\", ATTRS{idVendor}==\"0c2e\", ATTRS{idProduct}==\"0b61\", "
                    "ENV{ID_MM_DEVICE_IGNORE}=\"1\"' | sudo tee /etc/udev/rules.d/70-ravlin-mm-0c2e-0b61.rules");
    EXPECT_HAS(out, "ok      /dev/ttyACM1: CDC-ACM serial, usb:0c2e:0b61 Honeywell; Port=66");
    EXPECT_EQ(out.find("problem /dev/ttyACM1: ModemManager"), std::string::npos) << out;
    EXPECT_HAS(out, "problem udev rules: the package's rules (70-ravlin-scanners.rules) are not installed");
}

TEST(Doctor, BrlttyClaimingAUsbSerialAdapter)
{
    DisplayOverride noX("");
    SerialTestbed bed;
    UsbSerial claimed = kCh340;
    claimed.tty.clear();  // brltty took it: no ttyUSB node
    bed.plug(1, claimed);
    auto [out, status] = doctor();
    EXPECT_EQ(out.find("brltty"), std::string::npos) << out;
    EXPECT_EQ(status, 1) << out;  // no scanner at all
    EXPECT_HAS(out, "problem scanners: no scanner this user can use was found");

    // brltty's own line for the CH340 (Debian's 85-brltty.rules).
    std::ofstream("/usr/lib/udev/rules.d/85-brltty.rules")
        << "# Device: 1A86:7523\nENV{PRODUCT}==\"1a86/7523/*\", ENV{BRLTTY_BRAILLE_DRIVER}=\"bm\", "
           "GOTO=\"brltty_usb_run\"\n";
    std::tie(out, status) = doctor();
    std::filesystem::remove("/usr/lib/udev/rules.d/85-brltty.rules");
    EXPECT_HAS(out, "problem usb:1a86:7523: USB-serial adapter, usb:1a86:7523: brltty's rule "
                    "/usr/lib/udev/rules.d/85-brltty.rules claims it for a braille display, and its ttyUSB node goes "
                    "away\n        fix: sudo ln -s /dev/null /etc/udev/rules.d/85-brltty.rules");
}

TEST(Doctor, HeldSerialLineNamesItsHolder)
{
    DisplayOverride noX("");
    SerialTestbed bed;
    bed.plug(1, kHoneywellAcmMarked);
    VirtualSerialPort line("ttyACM0");
    ChildProcess holder({kTool, "listen", "--set", "Port=65"}, {}, true);
    ASSERT_EQ(holder.readLine().rfind("listening on", 0), 0u);
    const auto [out, status] = doctor();
    EXPECT_EQ(status, 1) << out;
    // The test's own end of the line has it open too, without the lock.
    const std::string named = std::to_string(holder.id()) + " (ravlin-host)";
    EXPECT_HAS(out, "problem /dev/ttyACM0: CDC-ACM serial, usb:0c2e:0b61 Honeywell; Port=65; held by another program: ");
    EXPECT_HAS(out, named + "\n        fix: close the program that holds it: ");
}

TEST(Doctor, NotInTheGroupOfTheLine)
{
    DisplayOverride noX("");
    SerialTestbed bed;
    UsbSerial adapter = kCh340;
    adapter.modemManagerIgnores = true;
    bed.plug(1, adapter);
    bed.readableByEveryone();
    VirtualSerialPort line("ttyUSB0");
    ASSERT_EQ(chown(line.slavePath().c_str(), 0, 20), 0);  // dialout on Debian
    ASSERT_EQ(chmod(line.slavePath().c_str(), 0660), 0);
    const auto [out, status] = ChildProcess::run(ravlinHostAsOrdinaryUser(kTool, {"doctor"}));
    EXPECT_EQ(status, 1) << out;
    EXPECT_HAS(out, "problem /dev/ttyUSB0: USB-serial chip (ch341), usb:1a86:7523; Port=129; this user cannot open "
                    "it: not in the dialout group\n        fix: sudo usermod -aG dialout nobody   (then log out and in)\n");
}

TEST(Doctor, HidPosScannerAUserCannotRead)
{
    DisplayOverride noX("");
    HidrawTestbed bed;
    bed.plug(0, {kHoneywellVendorId, 0x0B87, "A", "Honeywell Xenon", hidpos_descriptors::kStandardWithByteCount});
    const std::string root = bed.nodeFile(0).substr(0, bed.nodeFile(0).rfind("/dev/"));
    ASSERT_EQ(std::system(("chmod -R a+rwX '" + root + "' && chmod 0600 '" + bed.nodeFile(0) + "'").c_str()), 0);
    auto [out, status] = ChildProcess::run(ravlinHostAsOrdinaryUser(kTool, {"doctor"}));
    EXPECT_EQ(status, 1) << out;
    EXPECT_HAS(out, "problem /dev/hidraw0: HID POS scanner \"Honeywell Xenon\", usb:0c2e:0b87; Port=193; this user "
                    "cannot read it: no uaccess rule gives it to the user at the seat\n        fix: sudo cp "
                    "70-ravlin-scanners.rules /etc/udev/rules.d/ && sudo udevadm control --reload");
    // Root reads it.
    std::tie(out, status) = doctor();
    EXPECT_EQ(status, 0) << out;
    EXPECT_HAS(out, "ok      /dev/hidraw0: HID POS scanner \"Honeywell Xenon\", usb:0c2e:0b87; Port=193; this user can read it\n");
}

TEST(Doctor, GrabbedKernelKeyboard)
{
    DisplayOverride noX("");
    MockInput devices;
    devices.plug(atKeyboard());
    devices.plug(honeywellScanner());
    auto [out, status] = doctor();
    EXPECT_EQ(status, 0) << out;
    EXPECT_HAS(out, "ok      /dev/input/event12: keyboard-mode device (USB keyboard), usb:0c2e:0b61; "
                    "KeyboardDevice=Honeywell Imaging   Mobility 1950g (or usb:0c2e:0b61); read from its kernel node; "
                    "this user can read it\n");
    EXPECT_HAS(out, "info    /dev/input/event3: keyboard; KeyboardDevice=AT Translated Set 2 keyboard; read from its "
                    "kernel node; this user can read it\n");
    devices.holdElsewhere(honeywellScanner());
    std::tie(out, status) = doctor();
    EXPECT_EQ(status, 1) << out;
    EXPECT_HAS(out, "problem /dev/input/event12: keyboard-mode device (USB keyboard), usb:0c2e:0b61; "
                    "KeyboardDevice=Honeywell Imaging   Mobility 1950g (or usb:0c2e:0b61); read from its kernel node; "
                    "another program grabbed it: busy\n        fix: close the program that reads this scanner");
}

TEST(Doctor, KeyboardAUserCannotReadWithoutX)
{
    DisplayOverride noX("");
    MockInput devices;
    devices.plug(honeywellScanner());
    devices.nodesForRootOnly();
    const auto [out, status] = ChildProcess::run(ravlinHostAsOrdinaryUser(kTool, {"doctor"}));
    EXPECT_EQ(status, 1) << out;
    EXPECT_HAS(out, "this user cannot read it: no uaccess rule gives it to the user at the seat\n        fix: "
                    "ravlin-host udev-rule usb:0c2e:0b61 | sudo tee /etc/udev/rules.d/70-ravlin-scanner-0c2e-0b61.rules");
}

TEST(Doctor, X11SessionReadsKeyboardsXShowsThroughXInput)
{
    XvfbServer x;
    const auto [out, status] = doctor();
    EXPECT_HAS(out, "info    session: X11 (DISPLAY=" + x.display() + "): keyboards X shows are read through X Input\n");
    EXPECT_HAS(out, "info    X keyboard: KeyboardDevice=");
}

// A Wayland desktop, as its session announces itself to the programs in it.
class WaylandSession {
public:
    WaylandSession() { setenv("WAYLAND_DISPLAY", "wayland-0", 1); }
    ~WaylandSession() { unsetenv("WAYLAND_DISPLAY"); }
};

TEST(Doctor, WaylandSessionsReadScannersFromTheKernel)
{
    MockInput devices;
    devices.plug(honeywellScanner());
    const std::string scanner = "ok      /dev/input/event12: keyboard-mode device (USB keyboard), usb:0c2e:0b61; "
                                "KeyboardDevice=Honeywell Imaging   Mobility 1950g (or usb:0c2e:0b61); read from its "
                                "kernel node; this user can read it\n";
    WaylandSession wayland;
    {
        WestonXwayland xwayland;
        const auto [out, status] = doctor();
        EXPECT_EQ(status, 0) << out;
        EXPECT_HAS(out, "info    session: Wayland with Xwayland (DISPLAY=" + xwayland.display() +
                            "): keyboard-mode scanners are read from the kernel's nodes\n");
        EXPECT_HAS(out, scanner);
    }
    DisplayOverride noX("");
    const auto [out, status] = doctor();
    EXPECT_EQ(status, 0) << out;
    EXPECT_HAS(out, "info    session: Wayland without X: keyboard-mode scanners are read from the kernel's nodes\n");
    EXPECT_HAS(out, scanner);
}

TEST(Doctor, JsonGivesOneObjectAFinding)
{
    DisplayOverride noX("");
    SerialTestbed bed;
    bed.plug(1, kHoneywellAcm);
    VirtualSerialPort line("ttyACM0");
    FakeModemManager modemManager;
    const auto [out, status] = doctor({"--json"});
    EXPECT_EQ(status, 0) << out;
    std::istringstream lines(out);
    bool sawProblem = false, sawOk = false;
    for (std::string line; std::getline(lines, line);) {
        const auto finding = nlohmann::json::parse(line);
        EXPECT_TRUE(finding.contains("level") && finding.contains("subject") && finding.contains("text")) << line;
        if (finding["level"] == "problem" && finding["subject"] == "/dev/ttyACM0") {
            sawProblem = true;
            EXPECT_NE(finding["fix"].get<std::string>().find("ID_MM_DEVICE_IGNORE"), std::string::npos) << line;
        }
        sawOk = sawOk || (finding["level"] == "ok" && finding["subject"] == "/dev/ttyACM0");
    }
    EXPECT_TRUE(sawProblem && sawOk) << out;
}

TEST(Doctor, UsageErrors)
{
    EXPECT_EQ(doctor({"--scan", "0"}).second, 2);
    EXPECT_EQ(doctor({"--scan", "soon"}).second, 2);
    EXPECT_EQ(doctor({"--bogus"}).second, 2);
}

TEST(Doctor, ScanOnASerialLine)
{
    DisplayOverride noX("");
    SerialTestbed bed;
    bed.plug(1, kHoneywellAcmMarked);
    VirtualSerialPort line("ttyACM0");
    ScanningDoctor tool;

    line.write("0104601234567893215Ab3cDe\x1d" "91EE06\r");
    std::string out = tool.readUntil("GS arrives");
    EXPECT_HAS(out, "scan    /dev/ttyACM0: through the serial line: 0104601234567893215Ab3cDe<GS>91EE06<CR> (33 bytes)\n");
    EXPECT_HAS(out, "advice  /dev/ttyACM0: codes end with <CR>\n        fix: Suffix=13\n");
    EXPECT_HAS(out, "advice  /dev/ttyACM0: GS arrives as the byte 29 (0x1D): nothing to set\n");

    line.write("]d20104601234567893215Ab3cDe91EE06");
    out = tool.readUntil("GS1 code without GS");
    EXPECT_HAS(out, "codes end with no suffix: only a pause ends them");
    EXPECT_HAS(out, "fix: Suffix=-1 TimeoutCOM=50\n");
    EXPECT_HAS(out, "codes start with the AIM symbology identifier ]d2");

    line.write("\x02" "4006381333931\r\n");
    out = tool.readUntil("a prefix the scanner adds");
    EXPECT_HAS(out, "codes start with <STX>, a prefix the scanner adds");
    EXPECT_HAS(out, "codes end with <CR><LF>");

    line.write("\xcf\xf0\xe8\xe2\xe5\xf2\r");  // Windows-1251
    out = tool.readUntil("COMEncoding");
    EXPECT_HAS(out, "fix: COMEncoding=Windows-1251\n");

    EXPECT_EQ(tool.stop(), 0);
}

namespace {

std::vector<input_event> press(std::initializer_list<int> held, int key)
{
    std::vector<input_event> events;
    for (int h : held)
        events.insert(events.end(), {keyEvent(h, 1), synEvent()});
    events.insert(events.end(), {keyEvent(key, 1), synEvent(), keyEvent(key, 0), synEvent()});
    for (int h : held)
        events.insert(events.end(), {keyEvent(h, 0), synEvent()});
    return events;
}

}  // namespace

TEST(Doctor, ScanOnAKeyboardTellsHowGsWasTyped)
{
    DisplayOverride noX("");
    MockInput devices;
    const MockKeyboard scanner = honeywellScanner();
    devices.plug(scanner);
    ScanningDoctor tool;

    devices.type(scanner, MockInput::keysOf("0104601234567893215Ab"));
    devices.send(scanner, press({KEY_LEFTCTRL}, KEY_RIGHTBRACE));
    devices.type(scanner, MockInput::keysOf("91EE06\r"));
    std::string out = tool.readUntil("GSSymbolKey=-1");
    EXPECT_HAS(out, "scan    /dev/input/event12: through the keyboard: 0104601234567893215Ab<GS>91EE06<CR> (29 bytes)\n");
    EXPECT_HAS(out, "advice  /dev/input/event12: codes end with <CR>\n        fix: Suffix=13\n");
    EXPECT_HAS(out, "GS arrives typed as Ctrl+], which the driver reads as GS (byte 29) with no GS key set\n");

    devices.type(scanner, MockInput::keysOf("0104601234567893"));
    devices.send(scanner, press({}, KEY_F8));
    devices.type(scanner, MockInput::keysOf("21AB\r"));
    out = tool.readUntil("GSSymbolKey=-1");
    EXPECT_HAS(out, "GS arrives typed as F8,");

    devices.type(scanner, MockInput::keysOf("0104601234567893"));
    devices.send(scanner, {keyEvent(KEY_LEFTALT, 1), synEvent()});
    for (int key : {KEY_KP0, KEY_KP0, KEY_KP2, KEY_KP9})
        devices.send(scanner, press({}, key));
    devices.send(scanner, {keyEvent(KEY_LEFTALT, 0), synEvent()});
    devices.type(scanner, MockInput::keysOf("21AB\r"));
    out = tool.readUntil("GSSymbolKey=-1");
    EXPECT_HAS(out, "<GS>21AB<CR>");
    EXPECT_HAS(out, "GS arrives typed as Alt+0029,");

    // GS sent as F9, and no Enter: the code ends at the pause.
    devices.type(scanner, MockInput::keysOf("0104601234567893215A"));
    devices.send(scanner, press({}, KEY_F9));
    devices.type(scanner, MockInput::keysOf("91EE06"));
    out = tool.readUntil("GSSymbolKey=8");
    EXPECT_HAS(out, "the scanner pressed F9 inside the code, which types nothing: if it stands for GS, tell the "
                    "driver\n        fix: GSSymbolKey=8\n");
    EXPECT_HAS(out, "codes end with no suffix");

    // A German-layout scanner types < with the 102nd key.
    devices.send(scanner, press({}, KEY_102ND));
    devices.type(scanner, MockInput::keysOf("A\r"));
    out = tool.readUntil("keyboard country");
    EXPECT_HAS(out, "the scanner typed the key between left Shift and Z (102nd key), a key a US keyboard does not have");
    out = tool.readUntil("udev-rule usb:");
    EXPECT_HAS(out, "fix: ravlin-host udev-rule usb:0c2e:0b61 | sudo tee");

    EXPECT_EQ(tool.stop(), 0);
}

TEST(Doctor, ScanOnAKeyboardWithCapsLockLit)
{
    DisplayOverride noX("");
    MockInput devices;
    const MockKeyboard scanner = honeywellScanner();
    devices.plug(scanner);
    devices.reportKeyState(scanner, {}, {LED_CAPSL});
    ScanningDoctor tool;
    devices.type(scanner, MockInput::keysOf("AB12\r"));
    const std::string out = tool.readUntil("Caps Lock");
    EXPECT_HAS(out, "problem /dev/input/event12: Caps Lock was on or pressed");
    EXPECT_EQ(tool.stop(), 0);
}

TEST(Doctor, ScanOnAHidPosScanner)
{
    DisplayOverride noX("");
    HidrawTestbed bed;
    const HidrawTestbed::Device scanner{kHoneywellVendorId, 0x0B87, "T", "Honeywell Xenon",
                                        hidpos_descriptors::kStandardWithByteCount};
    bed.plug(0, scanner);
    ScanningDoctor tool;
    const HidPosLayout layout = *parseHidPosLayout(scanner.descriptor, scanner.vendorId);
    std::string stream;
    for (const std::string& r : reportsFor(layout, "]d2", "0104601234567893215Ab3cDe\x1d" "91EE06"))
        stream += r;
    bed.send(0, stream);
    std::string out = tool.readUntil("HID POS mode");
    EXPECT_HAS(out, "scan    /dev/hidraw0: through the HID POS: 0104601234567893215Ab3cDe<GS>91EE06 (32 bytes)\n");
    EXPECT_HAS(out, "GS arrives as the byte 29 (0x1D): nothing to set\n");
    EXPECT_HAS(out, "info    /dev/hidraw0: HID POS mode: the symbology of this code is ]d2\n");
    EXPECT_EQ(out.find("Suffix="), std::string::npos) << out;

    stream.clear();
    for (const std::string& r : reportsFor(layout, "]E0", "4006381333931\r"))
        stream += r;
    bed.send(0, stream);
    out = tool.readUntil("HID POS mode");
    EXPECT_HAS(out, "each code ends with <CR>, which the scanner adds and the driver passes on");
    EXPECT_EQ(tool.stop(), 0);
}
