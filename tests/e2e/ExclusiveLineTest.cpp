// One reader to a serial line: a second open, from this host or another
// program, fails instead of taking bytes out of the middle of the first
// reader's codes, and the line is free again once its reader closes it.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "ChildProcess.h"
#include "OrdinaryUser.h"
#include "ComponentFixture.h"
#include "TestHost.h"
#include "VirtualSerialPort.h"

namespace {

using ExclusiveLine = ComponentFixture;

std::wstring lastError(Component& c)
{
    return c.call(L"GetLastError").params[0].text;
}

// Opens the line as an ordinary user with a shell, which takes no lock.
std::pair<std::string, int> openAsOrdinaryUser(const std::string& path)
{
    return ChildProcess::run(asOrdinaryUser({"/bin/sh", "-c", "exec 3<" + path + " && echo opened"}));
}

}  // namespace

TEST_F(ExclusiveLine, SecondComponentFailsAndTheFirstKeepsEveryByte)
{
    VirtualSerialPort line("ttyUSB0");
    Component first = makeOnPort(129);
    Component second = makeOnPort(129);
    Component nowhere = makeOnPort(129 + 30);
    EXPECT_EQ(nowhere.open(), L"");
    const std::wstring noLineError = lastError(nowhere);

    const std::wstring id = first.open();
    ASSERT_FALSE(id.empty());
    EXPECT_EQ(second.open(), L"");
    EXPECT_EQ(lastError(second), noLineError);

    std::vector<std::wstring> sent;
    for (int i = 0; i < 20; ++i) {
        const std::string code = "4006381" + std::to_string(100000 + i);
        line.write(code + "\r");
        sent.emplace_back(code.begin(), code.end());
    }
    const auto events = host.connection.waitForEvents(sent.size());
    std::vector<std::wstring> received;
    for (const HostEvent& e : events)
        received.push_back(e.data);
    EXPECT_EQ(received, sent);

    // Free again once closed.
    EXPECT_TRUE(first.close(id));
    EXPECT_FALSE(second.open().empty());
    line.write("5\r");
    EXPECT_THAT(host.connection.waitForEvent(sent.size() + 1), EventData(L"5"));
}

TEST_F(ExclusiveLine, AnotherHostCannotOpenAHeldLine)
{
    VirtualSerialPort line("ttyACM0");
    Component c = makeOnPort(65);
    const std::wstring id = c.open();
    ASSERT_FALSE(id.empty());
    const auto [out, status] = ChildProcess::run({RAVLIN_HOST_TOOL, "listen", "--set", "Port=65"});
    EXPECT_EQ(status, 1) << out;
    EXPECT_NE(out.find("Open failed"), std::string::npos) << out;
    EXPECT_TRUE(c.close(id));
}

TEST(ExclusiveLinePorts, PortsNamesTheProgramsThatHaveALineOpen)
{
    VirtualSerialPort line("ttyUSB2");
    const std::string listener = [] {
        ChildProcess host({RAVLIN_HOST_TOOL, "listen", "--set", "Port=131"}, {}, true);
        EXPECT_EQ(host.readLine().rfind("listening on", 0), 0u);
        const std::string held = ChildProcess::run({RAVLIN_HOST_TOOL, "ports"}).first;
        EXPECT_NE(held.find(" " + std::to_string(host.id()) + " ("), std::string::npos) << held;
        return std::to_string(host.id());
    }();
    const std::string free = ChildProcess::run({RAVLIN_HOST_TOOL, "ports"}).first;
    EXPECT_EQ(free.find(" " + listener + " ("), std::string::npos) << free;
}

TEST_F(ExclusiveLine, ProgramsWithoutTheLockAreKeptOutUnlessRoot)
{
    VirtualSerialPort line("ttyS3");
    ASSERT_EQ(chmod(line.slavePath().c_str(), 0666), 0);
    EXPECT_EQ(openAsOrdinaryUser("/dev/ttyS3").first, "opened\n") << "the line is open to all before";
    Component c = makeOnPort(4);
    const std::wstring id = c.open();
    ASSERT_FALSE(id.empty());
    const auto [out, status] = openAsOrdinaryUser("/dev/ttyS3");
    EXPECT_NE(status, 0);
    EXPECT_NE(out.find("busy"), std::string::npos) << out;
    EXPECT_TRUE(c.close(id));
    EXPECT_EQ(openAsOrdinaryUser("/dev/ttyS3").first, "opened\n") << "and again after";
}
