// ravlin-host doctor: why a scanner does not work, one finding a line, each
// with the fix to type: the session, every device the driver could read and
// whether this user can, and with --scan the settings a test scan calls for.
#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <pwd.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <dlfcn.h>
#include <fstream>
#include <iostream>
#include <memory>
#include <mutex>
#include <optional>

#include "Command.h"
#include "Finding.h"
#include "KeyboardScan.h"
#include "Processes.h"
#include "ScanAdvice.h"
#include "UsbIdentity.h"
#include "input/DeviceNodes.h"
#include "input/EvdevKeyboards.h"
#include "input/HidrawNode.h"
#include "input/InputDeviceComPort.h"
#include "input/InputDeviceHidPos.h"
#include "input/InputDeviceKeyboard.h"
#include "input/PortFamily.h"
#include "input/UdevApi.h"
#include "util/CharsetConversion.h"
#include "util/SymbolCodecs.h"
#include "util/XApi.h"

namespace {

namespace fs = std::filesystem;

constexpr char kRulesFile[] = "70-ravlin-scanners.rules";
const char* const kRulesFolders[] = {"/etc/udev/rules.d", "/run/udev/rules.d", "/usr/local/lib/udev/rules.d",
                                     "/usr/lib/udev/rules.d", "/lib/udev/rules.d"};
constexpr char kReload[] = " && sudo udevadm control --reload && sudo udevadm trigger";

std::atomic<bool> interrupted{false};
void onSignal(int) { interrupted = true; }

// A device the driver could read, for the test scan.
struct Candidate {
    ScanEvidence::Path path;
    std::string node;
    uint32_t port = 0;          // serial and HID POS
    std::string kernelNodeRule;  // keyboards read from the kernel's node
};

struct Report {
    bool json = false;
    bool anyScanner = false;
    std::vector<Candidate> usable;

    void add(Finding::Level level, const std::string& subject, const std::string& text,
             const std::string& fix = std::string()) const
    {
        printFinding({level, subject, text, fix}, json);
    }
};

std::string userName()
{
    const passwd* user = getpwuid(geteuid());
    return user ? user->pw_name : std::to_string(geteuid());
}

bool inGroup(gid_t group)
{
    if (getegid() == group)
        return true;
    gid_t groups[256];
    const int count = getgroups(256, groups);
    for (int i = 0; i < count; ++i)
        if (groups[i] == group)
            return true;
    return false;
}

std::string describe(const UsbIdentity& usb)
{
    return usb.usb() ? ", " + usb.ids() + (usb.maker.empty() ? "" : " " + usb.maker) : std::string();
}

std::string installedRules()
{
    for (const char* folder : kRulesFolders) {
        const std::string path = std::string(folder) + "/" + kRulesFile;
        if (access(path.c_str(), R_OK) == 0)
            return path;
    }
    return std::string();
}

// The command that installs the rules; the release tarball has the file
// beside ravlin-host.
std::string installRulesFix()
{
    std::error_code error;
    const fs::path beside = fs::read_symlink("/proc/self/exe", error).parent_path() / kRulesFile;
    const bool found = !error && access(beside.c_str(), R_OK) == 0;
    return "sudo cp " + (found ? beside.string() : std::string(kRulesFile)) + " /etc/udev/rules.d/" + kReload +
           (found ? "" : "   (the file is in the release tarball)");
}

// A brltty rules file that claims this USB device: brltty takes such
// USB-serial adapters for braille displays, and the tty goes away.
std::string brlttyRuleFor(const UsbIdentity& usb)
{
    const std::string product = usb.vendor + "/" + usb.product + "/";
    const std::string vendorMatch = "ATTRS{idVendor}==\"" + usb.vendor + "\"";
    const std::string productMatch = "ATTRS{idProduct}==\"" + usb.product + "\"";
    std::error_code error;
    for (const char* folder : kRulesFolders)
        for (const auto& file : fs::directory_iterator(folder, error)) {
            if (file.path().filename().string().find("brltty") == std::string::npos)
                continue;
            std::ifstream in(file.path());
            for (std::string line; std::getline(in, line);)
                if (line.compare(0, 1, "#") != 0 &&
                    (line.find("ENV{PRODUCT}==\"" + product) != std::string::npos ||
                     (line.find(vendorMatch) != std::string::npos && line.find(productMatch) != std::string::npos)))
                    return file.path().string();
        }
    return std::string();
}

std::string libraryState(const char* name, bool present) { return std::string(name) + (present ? " present" : " missing"); }

// Looked for beside the C library (and under /usr where that is elsewhere)
// rather than loaded: a toolkit loaded and unloaded again leaves GLib holding
// its types.
bool gtkPresent()
{
    Dl_info libc{};
    if (!dladdr(reinterpret_cast<void*>(&std::free), &libc) || !libc.dli_fname)
        return false;
    const fs::path folder = fs::path(libc.dli_fname).parent_path();
    std::error_code error;
    for (const fs::path& candidate : {folder, fs::path("/usr") / folder.relative_path()})
        if (fs::exists(candidate / "libgtk-x11-2.0.so.0", error))
            return true;
    return false;
}

// Whether an X server answers, and whether the session is Wayland's.
bool checkSession(const Report& report)
{
    const XApi* x = XApi::get();
    Display* display = x ? x->XOpenDisplay(nullptr) : nullptr;
    if (display)
        x->XCloseDisplay(display);
    const char* wayland = std::getenv("WAYLAND_DISPLAY");
    const char* shown = std::getenv("DISPLAY");
    const std::string name = shown ? shown : "";
    std::string session;
    if (wayland && *wayland)
        session = display ? "Wayland with Xwayland (DISPLAY=" + name + "): keyboard-mode scanners are read from "
                            "the kernel's nodes"
                          : "Wayland without X: keyboard-mode scanners are read from the kernel's nodes";
    else if (display)
        session = "X11 (DISPLAY=" + name + "): keyboards X shows are read through X Input";
    else
        session = "no X display: keyboard-mode scanners are read from the kernel's nodes";
    report.add(Finding::Level::Info, "session", session);
    report.add(Finding::Level::Info, "session",
               libraryState("X client libraries", x != nullptr) + ", " +
                   libraryState("libudev", UdevApi::get() != nullptr) + ", " +
                   libraryState("GTK 2 (the test window)", gtkPresent()));
    if (!UdevApi::get())
        report.add(Finding::Level::Problem, "session",
                   "without libudev the driver finds no kernel keyboards and notices no plugging",
                   "sudo apt-get install libudev1");
    if (installedRules().empty())
        report.add(Finding::Level::Problem, "udev rules",
                   std::string("the package's rules (") + kRulesFile +
                       ") are not installed: HID POS scanners stay root's and ModemManager probes CDC-ACM scanners",
                   installRulesFix());
    return display != nullptr;
}

// Why this user cannot read a serial line, or who holds it; empty when it can.
// Held means what keeps the driver out: exclusive mode or the lock every
// reader of the driver takes.
std::string lineProblem(const std::string& path, std::string& fix)
{
    const int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    const int cause = errno;
    bool held = fd < 0 && cause == EBUSY;
    if (fd >= 0) {
        held = flock(fd, LOCK_EX | LOCK_NB) != 0;
        close(fd);
    }
    if (held) {
        const std::string holders = holdersOf(path);
        fix = "close the program that holds it" + (holders.empty() ? std::string() : ": " + holders);
        return "held by another program: " + (holders.empty() ? std::string("busy") : holders);
    }
    if (fd >= 0)
        return std::string();
    struct stat st {};
    if ((cause == EACCES || cause == EPERM) && stat(path.c_str(), &st) == 0) {
        const group* owner = getgrgid(st.st_gid);
        const std::string group = owner ? owner->gr_name : std::to_string(st.st_gid);
        if (!inGroup(st.st_gid)) {
            fix = "sudo usermod -aG " + group + " " + userName() + "   (then log out and in)";
            return "this user cannot open it: not in the " + group + " group";
        }
        fix = "log out and in (the " + group + " group counts from the next login)";
        return "this user cannot open it although in the " + group + " group";
    }
    return std::string("cannot be opened: ") + std::strerror(cause);
}

void checkSerialLines(Report& report)
{
    const std::string modemManager = processNamed("ModemManager");
    for (const PortFamily& family : kPortFamilies) {
        if (family.hidPos)
            continue;
        std::vector<std::string> paths = findDeviceNodes(family.node);
        std::sort(paths.begin(), paths.end(), [&family](const std::string& a, const std::string& b) {
            return portNumberOfNode(family, a).value_or(0) < portNumberOfNode(family, b).value_or(0);
        });
        for (const std::string& path : paths) {
            const auto port = portNumberOfNode(family, path);
            if (!port)
                continue;
            const std::string name = path.substr(5);
            const UsbIdentity usb = usbIdentityOf("/sys/class/tty/" + name);
            // A built-in port with no UART behind it (type 0) is no candidate.
            std::ifstream type("/sys/class/tty/" + name + "/type");
            std::string uart;
            if (std::string(family.node) == "ttyS" && std::getline(type, uart) && uart == "0")
                continue;
            const std::string function = std::string(family.node) == "ttyACM" ? "CDC-ACM serial"
                                         : std::string(family.node) == "ttyUSB"
                                             ? "USB-serial chip" + (usb.driver.empty() ? "" : " (" + usb.driver + ")")
                                             : "serial port";
            const std::string what = function + describe(usb) + "; Port=" + std::to_string(*port);
            std::string fix;
            const std::string problem = lineProblem(path, fix);
            if (problem.empty()) {
                report.add(Finding::Level::Ok, path, what + "; this user can read it");
                report.usable.push_back({ScanEvidence::Path::Serial, path, *port, ""});
                report.anyScanner = true;
            } else {
                report.add(Finding::Level::Problem, path, what + "; " + problem, fix);
            }
            if (!modemManager.empty() && std::string(family.node) != "ttyS" && !usb.modemManagerIgnores)
                report.add(Finding::Level::Problem, path,
                           "ModemManager (PID " + modemManager +
                               ") runs and this line is not marked ID_MM_DEVICE_IGNORE: it probes the line with AT "
                               "commands and takes the scanner's first bytes",
                           usb.usb() ? "echo 'SUBSYSTEMS==\"usb\", ATTRS{idVendor}==\"" + usb.vendor +
                                           "\", ATTRS{idProduct}==\"" + usb.product +
                                           "\", ENV{ID_MM_DEVICE_IGNORE}=\"1\"' | sudo tee "
                                           "/etc/udev/rules.d/70-ravlin-mm-" + usb.vendor + "-" + usb.product +
                                           ".rules" + kReload
                                     : "sudo systemctl disable --now ModemManager");
        }
    }
}

// Adapters brltty claims, whether or not their tty is still there.
void checkBrltty(const Report& report)
{
    for (const UsbIdentity& usb : usbDevices()) {
        const std::string rule = brlttyRuleFor(usb);
        if (rule.empty())
            continue;
        const bool inEtc = rule.rfind("/etc/", 0) == 0;
        report.add(Finding::Level::Problem, usb.ids(),
                   "USB-serial adapter" + describe(usb) + ": brltty's rule " + rule +
                       " claims it for a braille display, and its ttyUSB node goes away",
                   inEtc ? "sudo apt-get remove brltty   (unless a braille display is used)"
                         : "sudo ln -s /dev/null /etc/udev/rules.d/" + fs::path(rule).filename().string() + kReload +
                               "   (or: sudo apt-get remove brltty)");
    }
}

void checkHidPosScanners(Report& report)
{
    const bool rulesInstalled = !installedRules().empty();
    for (const HidrawNode& node : HidrawNode::list()) {
        if (!node.layout)
            continue;
        const UsbIdentity usb = usbIdentityOf(node.sysfsPath());
        const std::string what = "HID POS scanner \"" + normalisedDeviceName(node.product) + "\"" + describe(usb) +
                                 "; Port=" + std::to_string(node.portNumber());
        const int fd = open(node.devicePath().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        const int cause = errno;
        if (fd >= 0) {
            close(fd);
            report.add(Finding::Level::Ok, node.devicePath(), what + "; this user can read it");
            report.usable.push_back({ScanEvidence::Path::HidPos, node.devicePath(), node.portNumber(), ""});
            report.anyScanner = true;
        } else if (cause == EACCES || cause == EPERM) {
            char vendor[8];
            std::snprintf(vendor, sizeof vendor, "%04x", node.vendorId);
            report.add(Finding::Level::Problem, node.devicePath(),
                       what + "; this user cannot read it: no uaccess rule gives it to the user at the seat",
                       rulesInstalled ? std::string("copy ") + installedRules() +
                                            " to /etc/udev/rules.d/ and add the line ATTRS{idVendor}==\"" + vendor +
                                            "\", TAG+=\"uaccess\" beside the other makers' lines" + ", then: sudo udevadm control --reload && sudo udevadm trigger"
                                      : installRulesFix());
        } else {
            report.add(Finding::Level::Problem, node.devicePath(), what + "; cannot be opened: " + std::strerror(cause));
        }
    }
}

std::string keyboardRuleCommand(const EvdevKeyboard& keyboard)
{
    if (keyboard.ids.empty())
        return std::string();
    const std::string file = "70-ravlin-scanner-" + keyboard.ids.substr(4, 4) + "-" + keyboard.ids.substr(9, 4);
    return "ravlin-host udev-rule " + keyboard.ids + " | sudo tee /etc/udev/rules.d/" + file + ".rules" + kReload;
}

void checkKeyboards(Report& report, bool xReachable)
{
    for (const EvdevKeyboard& keyboard : listEvdevKeyboards()) {
        const bool throughX = xReachable && InputDeviceKeyboard::serverShows(keyboard.name);
        const UsbIdentity usb = usbIdentityOf("/sys/class/input/" + keyboard.node.substr(11));
        const std::string what = std::string(keyboard.ids.empty() ? "keyboard" : "keyboard-mode device (USB keyboard)") +
                                 describe(usb) + "; KeyboardDevice=" + keyboard.name +
                                 (keyboard.ids.empty() ? "" : " (or " + keyboard.ids + ")") + "; read " +
                                 (throughX ? "through X Input" : "from its kernel node");
        const int fd = openKeyboardNode(keyboard.node, true);
        const int cause = errno;
        const std::string rule = throughX ? std::string() : keyboardRuleCommand(keyboard);
        if (fd >= 0) {
            report.add(keyboard.ids.empty() ? Finding::Level::Info : Finding::Level::Ok, keyboard.node,
                       what + "; this user can read it");
            report.usable.push_back({ScanEvidence::Path::Keyboard, keyboard.node, 0, rule});
            close(fd);
            report.anyScanner = report.anyScanner || !keyboard.ids.empty();
        } else if (cause == EBUSY) {
            // Every reader has the node open (X's too): /proc cannot tell which one grabbed it.
            report.add(Finding::Level::Problem, keyboard.node, what + "; another program grabbed it: busy",
                       "close the program that reads this scanner (another driver, a key remapper)");
        } else if ((cause == EACCES || cause == EPERM) && throughX) {
            report.add(Finding::Level::Ok, keyboard.node, what + "; X reads it for this user (no rule needed on X11)");
            report.anyScanner = report.anyScanner || !keyboard.ids.empty();
        } else if (cause == EACCES || cause == EPERM) {
            report.add(keyboard.ids.empty() ? Finding::Level::Info : Finding::Level::Problem, keyboard.node,
                       what + "; this user cannot read it: no uaccess rule gives it to the user at the seat", rule);
        } else {
            report.add(Finding::Level::Problem, keyboard.node, what + "; cannot be opened: " + std::strerror(cause));
        }
    }
    // X's own list: what KeyboardDevice may name in an X11 session.
    if (!xReachable)
        return;
    for (const std::string& name : listKeyboardDeviceNames())
        if (name.rfind("Virtual core", 0) != 0 && InputDeviceKeyboard::serverShows(normalisedDeviceName(name)))
            report.add(Finding::Level::Info, "X keyboard",
                       "KeyboardDevice=" + normalisedDeviceName(name) + "; read through X Input");
}

// Codes from the readers' threads, printed on this one.
struct ScanQueue {
    std::mutex lock;
    std::deque<std::pair<std::string, ScanEvidence>> scans;

    void push(const std::string& node, ScanEvidence scan)
    {
        std::lock_guard<std::mutex> guard(lock);
        scans.emplace_back(node, std::move(scan));
    }
    std::deque<std::pair<std::string, ScanEvidence>> take()
    {
        std::lock_guard<std::mutex> guard(lock);
        return std::exchange(scans, {});
    }
};

void printScan(const Report& report, const std::string& node, const ScanEvidence& scan)
{
    static const char* const paths[] = {"serial line", "keyboard", "HID POS"};
    report.add(Finding::Level::Scan, node,
               std::string("through the ") + paths[static_cast<int>(scan.path)] + ": " + renderBytes(scan.bytes) +
                   " (" + std::to_string(scan.bytes.size()) + " bytes)");
    for (const Finding& advice : adviceFor(node, scan))
        printFinding(advice, report.json);
}

// Opens every usable device with the driver's own readers, with no suffix
// set so that the scanner's suffix stays in the bytes, and reports each code.
void testScan(const Report& report, int seconds)
{
    ScanQueue queue;
    std::vector<std::unique_ptr<InputDevice>> readers;
    std::vector<std::unique_ptr<KeyboardScan>> keyboards;
    std::vector<std::string> keyboardNodes;
    for (const Candidate& candidate : report.usable) {
        const std::string node = candidate.node;
        DeviceSettings settings;
        settings.port = candidate.port;
        settings.suffix.clear();
        settings.comTimeout = 50;
        if (candidate.path == ScanEvidence::Path::Serial) {
            auto reader = std::make_unique<InputDeviceComPort>(
                [&queue, node](const std::wstring& base64) {
                    ScanEvidence scan;
                    scan.bytes = base642Raw(wstr2str(base64));
                    queue.push(node, scan);
                },
                settings);
            if (reader->start())
                readers.push_back(std::move(reader));
        } else if (candidate.path == ScanEvidence::Path::HidPos) {
            auto reader = std::make_unique<InputDeviceHidPos>(
                DataCallback(), settings, [&queue, node](const std::wstring& base64, const std::string& symbology) {
                    ScanEvidence scan;
                    scan.path = ScanEvidence::Path::HidPos;
                    scan.bytes = base642Raw(wstr2str(base64));
                    scan.symbology = symbology;
                    queue.push(node, scan);
                });
            if (reader->start())
                readers.push_back(std::move(reader));
        } else {
            // Grabbed, so that the scan types nowhere else; a keyboard another
            // program grabbed in the meantime is left to it.
            const int fd = openKeyboardNode(candidate.node, true);
            if (fd >= 0) {
                keyboards.push_back(std::make_unique<KeyboardScan>(fd, candidate.kernelNodeRule));
                keyboardNodes.push_back(node);
            }
        }
    }
    std::cerr << "scan a code now: listening on " << readers.size() + keyboards.size() << " devices for " << seconds
              << " s (Ctrl+C ends it)" << std::endl;
    signal(SIGINT, onSignal);
    signal(SIGTERM, onSignal);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    std::vector<pollfd> fds(keyboards.size());
    while (!interrupted && std::chrono::steady_clock::now() < deadline) {
        int wait = 100;
        for (size_t i = 0; i < keyboards.size(); ++i) {
            // An unplugged node keeps reporting a hang-up: it is left out, or
            // poll would return at once for the rest of the scan.
            fds[i] = {keyboards[i]->gone() ? -1 : keyboards[i]->fd(), POLLIN, 0};
            if (keyboards[i]->pauseTimeout() >= 0)
                wait = std::min(wait, keyboards[i]->pauseTimeout());
        }
        const int ready = poll(fds.data(), fds.size(), wait);
        for (size_t i = 0; i < keyboards.size(); ++i) {
            std::vector<ScanEvidence> scans;
            if (ready > 0 && fds[i].revents) {
                scans = keyboards[i]->read();
                if (keyboards[i]->gone())
                    report.add(Finding::Level::Info, keyboardNodes[i], "unplugged during the scan");
            }
            else if (ready == 0)
                if (auto scan = keyboards[i]->pause())
                    scans.push_back(*scan);
            for (const ScanEvidence& scan : scans)
                printScan(report, keyboardNodes[i], scan);
        }
        for (const auto& [node, scan] : queue.take())
            printScan(report, node, scan);
    }
    readers.clear();
    for (const auto& [node, scan] : queue.take())
        printScan(report, node, scan);
}

int doctor(bool json, int scanSeconds)
{
    Report report;
    report.json = json;
    const bool xReachable = checkSession(report);
    checkSerialLines(report);
    checkBrltty(report);
    checkHidPosScanners(report);
    checkKeyboards(report, xReachable);
    if (!report.anyScanner)
        report.add(Finding::Level::Problem, "scanners", "no scanner this user can use was found");
    if (scanSeconds > 0)
        testScan(report, scanSeconds);
    return report.anyScanner ? 0 : 1;
}

}  // namespace

Command doctorCommand()
{
    return {"doctor", "why a scanner does not work: every device and what stops it, with the fix to type",
            [](CLI::App& app) -> std::function<int()> {
                auto json = std::make_shared<bool>(false);
                auto seconds = std::make_shared<int>(0);
                app.add_flag("--json", *json, "one JSON object a finding, a line each");
                app.add_option("--scan", *seconds, "listen this many seconds for a test scan and advise settings")
                    ->check(CLI::Range(1, 3600));
                return [json, seconds] { return doctor(*json, *seconds); };
            }};
}
