// The add-in loaded, used and unloaded five times by one host process, under
// a real X server: every source still works in a later cycle, and nothing the
// add-in opened stays loaded after it. (scripts/valgrind and the release
// tests run this under valgrind, which finds what an unload leaves allocated.)
#include <gtest/gtest.h>

#include <filesystem>

#include "ChildProcess.h"
#include "VirtualSerialPort.h"
#include "XClient.h"
#include "XvfbServer.h"

TEST(Unload, FiveCyclesOfUseLeaveNothingLoaded)
{
    XvfbServer server;
    VirtualSerialPort line("ttyUSB0");
    XClient x;
    // Beside this program, where a release build's tests are run from too.
    ChildProcess host({std::filesystem::read_symlink("/proc/self/exe").parent_path() / "unload_host"});
    for (int n = 1; n <= 5; ++n) {
        const std::string at = "cycle " + std::to_string(n) + " ";
        ASSERT_EQ(host.readLine(), at + "opened");
        line.write("SERIAL" + std::to_string(n) + "\r");
        line.waitUntilTaken();
        x.typeText("40" + std::to_string(n) + "\n");
        std::vector<std::string> codes = {host.readLine(), host.readLine()};
        std::sort(codes.begin(), codes.end());
        EXPECT_EQ(codes, (std::vector<std::string>{at + "code 40" + std::to_string(n), at + "code SERIAL" + std::to_string(n)}));
        const std::string form = host.readLine();
        ASSERT_EQ(form.rfind(at + "form ", 0), 0u) << form;
        EXPECT_GT(std::stoul(form.substr(at.size() + 5)), 1000u) << form;
        ASSERT_EQ(host.readLine(), at + "window");
        const Window window = x.waitForWindow("Тест устройства");
        ASSERT_NE(window, 0u) << "the window did not appear in " << at;
        x.closeWindow(window);
        EXPECT_EQ(host.readLine(), at + "DeviceTest 1");
        EXPECT_EQ(host.readLine(), at + "unloaded");
    }
    EXPECT_EQ(host.readLine(), "still mapped: none");
    EXPECT_EQ(host.wait(), 0);
}
