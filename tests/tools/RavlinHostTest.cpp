// ravlin-host end to end: the program as an integrator runs it.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <thread>

#include "ChildProcess.h"
#include "TestHost.h"
#include "TestUtil.h"
#include "VirtualSerialPort.h"
#include "util/CharsetConversion.h"

using namespace std::chrono_literals;

namespace {

const std::string kTool = RAVLIN_HOST_TOOL;

// Everything the program prints (both streams), and its exit status.
std::pair<std::string, int> run(const std::vector<std::string>& args)
{
    std::vector<std::string> argv = {kTool};
    argv.insert(argv.end(), args.begin(), args.end());
    return ChildProcess::run(argv);
}

}  // namespace

TEST(RavlinHost, DemoPlaysEveryCode)
{
    const auto [out, status] = run({"demo"});
    EXPECT_EQ(status, 0) << out;
    for (const char* code : {"4006381333931", "RAVLIN-2026-0001", "0104601234567893215Ab3cDe(029)91EE06(029)92dGVzdGtleQ==",
                             "MDEwNDYwMTIzNDU2Nzg5MzIxNUFiM2NEZR05MUVFMDYdOTJkR1Z6ZEd0bGVRPT0="})
        EXPECT_NE(out.find(code), std::string::npos) << code << "\n" << out;
    EXPECT_NE(out.find("codes sent 6, events received 6"), std::string::npos) << out;
}

TEST(RavlinHost, ListenPrintsJsonLines)
{
    VirtualSerialPort line("ttyUSB3");
    ChildProcess tool({kTool, "listen", "--set", "Port=132", "--set", "OutputDataType=2", "--json", "--count", "2",
                       "--timeout", "20"},
                      {}, true);
    EXPECT_EQ(tool.readLine().rfind("listening on InputDevice#1", 0), 0u);
    line.write("4006381333931\r");
    line.write("AB\r");
    const auto first = nlohmann::json::parse(tool.readLine());
    const auto second = nlohmann::json::parse(tool.readLine());
    EXPECT_EQ(first["source"], "InputDevice#1");
    EXPECT_EQ(first["event"], "ШтрихкодBase64");
    EXPECT_EQ(first["data"], "NDAwNjM4MTMzMzkzMQ==");
    EXPECT_EQ(second["data"], "QUI=");
    EXPECT_TRUE(first.contains("time"));
    EXPECT_EQ(tool.wait(), 0);
}

TEST(RavlinHost, ListenAsCardReaderInPlainText)
{
    VirtualSerialPort line("ttyACM0");
    ChildProcess tool({kTool, "listen", "--class", "CardReaderDevice", "--set", "Port=65", "--set",
                       "EquipmentType=СчитывательМагнитныхКарт", "--count", "1"},
                      {}, true);
    EXPECT_EQ(tool.readLine().rfind("listening on CardReaderDevice#1", 0), 0u);
    line.write(";1234=5678?\r");
    const std::string event = tool.readLine();
    EXPECT_NE(event.find("CardReaderDevice#1  ДанныеКарты  ;1234=5678?"), std::string::npos) << event;
    EXPECT_EQ(tool.wait(), 0);
}

TEST(RavlinHost, BadParametersAreRefusedBeforeOpening)
{
    auto [out, status] = run({"listen", "--set", "Bogus=1"});
    EXPECT_EQ(status, 2);
    EXPECT_NE(out.find("unknown parameter \"Bogus\"; parameters: Port, KeyboardDevice"), std::string::npos) << out;
    std::tie(out, status) = run({"listen", "--set", "Port=USB1"});
    EXPECT_EQ(status, 2);
    EXPECT_NE(out.find("Port takes an integer, not \"USB1\""), std::string::npos) << out;
    std::tie(out, status) = run({"listen", "--set", "IgnoreKeyboardState=maybe"});
    EXPECT_EQ(status, 2);
    EXPECT_NE(out.find("IgnoreKeyboardState takes true or false"), std::string::npos) << out;
    std::tie(out, status) = run({"listen", "--set", "Port"});
    EXPECT_EQ(status, 2);
    EXPECT_EQ(out.find("listening"), std::string::npos);
}

TEST(RavlinHost, FailedOpenPrintsTheDriversError)
{
    const auto [out, status] = run({"listen", "--set", "Port=200"});
    EXPECT_EQ(status, 1);
    EXPECT_NE(out.find("Open failed: Ошибка подключения. Проверьте доступность устройства."), std::string::npos) << out;
}

TEST(RavlinHost, ParamsEqualsGetParametersAndParses)
{
    VirtualSerialPort line("ttyUSB3");
    const auto [out, status] = run({"params"});
    EXPECT_EQ(status, 0);
    TestHost host;
    Component c = host.create(L"InputDevice");
    const std::wstring document = c.call(L"GetParameters").params[0].text;
    EXPECT_EQ(out, wstr2str(document) + "\n");
    EXPECT_EQ(runWithInput("xmllint --noout - && echo ok", out), "ok\n");
    const auto [pretty, prettyStatus] = run({"params", "--pretty"});
    EXPECT_EQ(prettyStatus, 0);
    EXPECT_NE(pretty.find("\n  <Page"), std::string::npos);
    EXPECT_EQ(runWithInput("xmllint --noout - && echo ok", pretty), "ok\n");
    IComponentBase* o = c.object();
    host.destroy(o);
}

TEST(RavlinHost, InfoAndPorts)
{
    VirtualSerialPort line("ttyUSB3");
    auto [out, status] = run({"info"});
    EXPECT_EQ(status, 0);
    EXPECT_NE(out.find("9.0.8.10"), std::string::npos);
    EXPECT_NE(out.find("5  Open / Подключить  (1)"), std::string::npos) << out;
    std::tie(out, status) = run({"ports"});
    EXPECT_EQ(status, 0);
    EXPECT_NE(out.find("132\tUSB COM4"), std::string::npos) << out;
}

TEST(RavlinHost, EveryCommandTakesTheLocale)
{
    for (const char* command : {"info", "params", "ports"}) {
        EXPECT_EQ(run({command, "--locale", "en"}).second, 0) << command;
        EXPECT_NE(run({command, "--locale", "fr"}).second, 0) << command;
    }
    const auto [out, status] = run({"demo", "--locale", "en"});
    EXPECT_EQ(status, 0) << out;
    EXPECT_NE(out.find("codes sent 6, events received 6"), std::string::npos) << out;
}
