// The opt-in support log, through ravlin-host as the host process: lines
// with RAVLIN_LOG, none without, never a code's content, and a log that
// takes nothing never holds back a scan.
#include <gtest/gtest.h>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "ChildProcess.h"
#include "VirtualSerialPort.h"
#include "util/SymbolCodecs.h"

namespace {

const std::string kSecret = "B4006381333931;1234=5678?";

std::string makeFolder()
{
    char dir[] = "/tmp/ravlin-log-XXXXXX";
    if (!mkdtemp(dir))
        throw std::runtime_error("mkdtemp failed");
    return dir;
}

std::vector<std::string> filesIn(const std::string& folder)
{
    std::vector<std::string> names;
    if (DIR* d = opendir(folder.c_str())) {
        while (dirent* e = readdir(d))
            if (e->d_name[0] != '.')
                names.push_back(folder + "/" + e->d_name);
        closedir(d);
    }
    return names;
}

// One scan through `ravlin-host listen` on ttyUSB5 (Port 134), with these extra variables.
void scanOnce(VirtualSerialPort& line, const std::vector<std::string>& env)
{
    ChildProcess tool({RAVLIN_HOST_TOOL, "listen", "--set", "Port=134", "--count", "1"}, env, true);
    ASSERT_EQ(tool.readLine().rfind("listening on InputDevice#1", 0), 0u);
    line.write(kSecret + "\r");
    EXPECT_NE(tool.readLine().find(kSecret), std::string::npos);
    EXPECT_EQ(tool.wait(), 0);
}

}  // namespace

TEST(SupportLog, LinesWithTheVariableNoneWithoutAndNeverACode)
{
    VirtualSerialPort line("ttyUSB5");
    // Without the variable no file is made, not even where the log's name points.
    const auto before = filesIn("/tmp");
    scanOnce(line, {});
    for (const std::string& name : filesIn("/tmp"))
        EXPECT_TRUE(std::find(before.begin(), before.end(), name) != before.end() ||
                    name.find("/tmp/Ravlin_") != 0)
            << name;

    const std::string folder = makeFolder();
    scanOnce(line, {"RAVLIN_LOG=" + folder});
    const auto files = filesIn(folder);
    ASSERT_EQ(files.size(), 1u);
    EXPECT_EQ(files[0].find(folder + "/Ravlin_x64_t"), 0u) << files[0];
    std::ifstream in(files[0]);
    std::stringstream all;
    all << in.rdbuf();
    const std::string log = all.str();
    for (const char* expected : {"support log of the input-device driver opened", "component InputDevice created",
                                 "Open InputDevice#1: Port=134 Speed=9600 TimeoutCOM=5 Suffix=0D",
                                 "serial line opened: /dev/ttyUSB5", "code delivered: 25 bytes, digest ",
                                 "Close InputDevice#1"})
        EXPECT_NE(log.find(expected), std::string::npos) << expected << "\n" << log;
    // Card tracks carry card numbers: no part of the code, in any form.
    for (const std::string& part : {kSecret, std::string("4006381333931"), std::string("1234=5678"),
                                    raw2Base64(kSecret).substr(0, 12)})
        EXPECT_EQ(log.find(part), std::string::npos) << part << "\n" << log;
    std::istringstream lines(log);
    for (std::string l; std::getline(lines, l);)
        EXPECT_TRUE(l.size() > 25 && l.rfind("20", 0) == 0 && l.find(" [") == 23) << l;
}

TEST(SupportLog, ALogThatTakesNothingNeverHoldsBackAScan)
{
    VirtualSerialPort line("ttyUSB5");
    const std::string fifo = makeFolder() + "/log";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    // Read by nobody: once its 64 KiB are full, it takes nothing.
    const int stalled = open(fifo.c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(stalled, 0);
    const int codes = 3000;
    ChildProcess tool({RAVLIN_HOST_TOOL, "listen", "--set", "Port=134", "--count", std::to_string(codes)},
                      {"RAVLIN_LOG=" + fifo}, true);
    ASSERT_EQ(tool.readLine().rfind("listening on InputDevice#1", 0), 0u);
    int received = 0;
    for (int i = 0; i < codes; ++i) {
        line.write("C" + std::to_string(100000 + i) + "\r");
        if (tool.readLine().find("C" + std::to_string(100000 + i)) != std::string::npos)
            ++received;
    }
    EXPECT_EQ(received, codes);
    EXPECT_EQ(tool.wait(), 0) << "the host ends at once, the writer never stuck";
    close(stalled);
}
