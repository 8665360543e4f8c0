// The add-in on a machine without the X client libraries. ravlin-host, which
// loads it as the platform does, runs while those library files are hidden
// behind /dev/null in this program's private mount namespace, with a live Xvfb
// on DISPLAY: the missing libraries are the only reason it has no X. What it
// does then must be what it does when no X server can be reached.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <link.h>
#include <sys/mount.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "ChildProcess.h"
#include "ElfInfo.h"
#include "TestHost.h"
#include "VirtualSerialPort.h"
#include "XClient.h"
#include "XvfbServer.h"

namespace {

const std::string kTool = RAVLIN_HOST_TOOL;
const std::vector<std::string> kXLibraries = {"libX11.so.6", "libX11-xcb.so.1", "libXi.so.6", "libxcb.so.1",
                                              "libxcb-xinput.so.0"};
const std::vector<std::string> kOpenXKeyboard = {"listen", "--set", "Port=0", "--set",
                                                 "KeyboardDevice=Virtual core XTEST keyboard", "--timeout", "1"};

// The file the dynamic loader reads for a library name, links resolved.
std::string libraryFile(const std::string& soname)
{
    void* handle = dlopen(soname.c_str(), RTLD_LAZY | RTLD_LOCAL);
    if (!handle)
        throw std::runtime_error("cannot load " + soname + ": " + dlerror());
    link_map* map = nullptr;
    dlinfo(handle, RTLD_DI_LINKMAP, &map);
    char* real = realpath(map->l_name, nullptr);
    const std::string path = real ? real : map->l_name;
    std::free(real);
    dlclose(handle);
    return path;
}

// While it lives, /dev/null is bound over each library's file: the loader
// finds the name and reads nothing, as if the package had never been
// installed. Programs started meanwhile cannot load them; this one, which
// did already, is not concerned.
class HiddenLibraries {
public:
    explicit HiddenLibraries(const std::vector<std::string>& sonames)
    {
        for (const std::string& soname : sonames) {
            const std::string path = libraryFile(soname);
            if (mount("/dev/null", path.c_str(), nullptr, MS_BIND, nullptr) != 0) {
                const std::string why = std::strerror(errno);
                reveal();
                throw std::runtime_error("cannot hide " + path + ": " + why);
            }
            hidden.push_back(path);
        }
    }
    ~HiddenLibraries() { reveal(); }
    HiddenLibraries(const HiddenLibraries&) = delete;
    HiddenLibraries& operator=(const HiddenLibraries&) = delete;

private:
    void reveal()
    {
        for (const std::string& path : hidden)
            umount2(path.c_str(), MNT_DETACH);
        hidden.clear();
    }
    std::vector<std::string> hidden;
};

// Everything ravlin-host prints (both streams), and its exit status.
std::pair<std::string, int> run(const std::vector<std::string>& args)
{
    std::vector<std::string> argv = {kTool};
    argv.insert(argv.end(), args.begin(), args.end());
    return ChildProcess::run(argv);
}

// The same command on this machine with no X server to reach.
std::pair<std::string, int> runWithoutServer(const std::vector<std::string>& args)
{
    DisplayOverride none("");
    return run(args);
}

class WithoutXLibraries : public ::testing::Test {
protected:
    XvfbServer server;  // started before any library is hidden: it needs them itself
};

}  // namespace

TEST(XLibraries, NoneInTheAddinsNeededList)
{
    const std::vector<std::string> needed = neededLibraries(testedLibrary());
    ASSERT_FALSE(needed.empty());
    for (const std::string& library : kXLibraries)
        EXPECT_EQ(std::count(needed.begin(), needed.end(), library), 0) << library;
}

TEST_F(WithoutXLibraries, SerialScansArrive)
{
    VirtualSerialPort line("ttyUSB1");
    HiddenLibraries hidden(kXLibraries);
    ChildProcess tool({kTool, "listen", "--set", "Port=130", "--count", "1"}, {}, true);
    EXPECT_EQ(tool.readLine().rfind("listening on InputDevice#1", 0), 0u);
    line.write("4006381333931\r");
    const std::string event = tool.readLine();
    EXPECT_NE(event.find("InputDevice#1  Штрихкод  4006381333931"), std::string::npos) << event;
    EXPECT_EQ(tool.wait(), 0);
}

TEST_F(WithoutXLibraries, KeyboardOpenFailsAsWithoutServer)
{
    const auto [opened, openedStatus] = run(kOpenXKeyboard);
    ASSERT_EQ(openedStatus, 0) << "the server's keyboard opens while the libraries are there\n" << opened;
    const auto noServer = runWithoutServer(kOpenXKeyboard);
    EXPECT_EQ(noServer.second, 1) << noServer.first;
    EXPECT_NE(noServer.first.find("Open failed: "), std::string::npos) << noServer.first;
    HiddenLibraries hidden(kXLibraries);
    EXPECT_EQ(run(kOpenXKeyboard), noServer);
}

TEST_F(WithoutXLibraries, ParametersListNoKeyboardsAsWithoutServer)
{
    const auto [withX, status] = run({"params"});
    ASSERT_EQ(status, 0) << withX;
    ASSERT_NE(withX.find("Xvfb keyboard"), std::string::npos) << withX;
    const auto noServer = runWithoutServer({"params"});
    EXPECT_EQ(noServer.first.find("Xvfb keyboard"), std::string::npos);
    HiddenLibraries hidden(kXLibraries);
    EXPECT_EQ(run({"params"}), noServer);
}

TEST_F(WithoutXLibraries, DeviceTestAsWithoutDisplay)
{
    {
        // With the libraries the window opens on this server (and is left
        // open: the program is killed with it).
        ChildProcess tool({kTool, "test"}, {}, true);
        XClient x;
        ASSERT_NE(x.waitForWindow("Тест устройства"), 0u);
    }
    const auto noServer = runWithoutServer({"test"});
    EXPECT_EQ(noServer, std::make_pair(std::string("DeviceTest returned true\n"), 0));
    HiddenLibraries hidden(kXLibraries);
    EXPECT_EQ(run({"test"}), noServer);
}

// One library missing is as good as all five: nothing half-loaded is used.
TEST_F(WithoutXLibraries, OneMissingLibraryIsNoX)
{
    const auto keyboardNoServer = runWithoutServer(kOpenXKeyboard);
    const auto paramsNoServer = runWithoutServer({"params"});
    HiddenLibraries hidden({"libxcb-xinput.so.0"});
    EXPECT_EQ(run(kOpenXKeyboard), keyboardNoServer);
    EXPECT_EQ(run({"params"}), paramsNoServer);
}
