#include "util/TextUtil.h"
#include "util/Logger.h"

#include <gtest/gtest.h>

#include <dirent.h>

#include <cstring>
#include <regex>
#include <set>
#include <string>

namespace {
std::set<std::string> tmpEntries()
{
    std::set<std::string> names;
    if (DIR* d = opendir("/tmp")) {
        while (dirent* e = readdir(d))
            names.insert(e->d_name);
        closedir(d);
    }
    return names;
}
}  // namespace

TEST(Logging, WritesNothing)
{
    const auto before = tmpEntries();
    log(std::wstring(100000, L'x'));
    log(std::string("message"));
    log(std::wstring());
    Logger logger;
    EXPECT_TRUE(logger.SetLogFolder(L"/tmp"));
    EXPECT_TRUE(logger.SetLogFolder(L"/nonexistent/folder"));
    logger.LogToFile(L"hello");
    const std::string name = getLogFileName();
    const auto after = tmpEntries();
    for (const auto& n : after)
        EXPECT_TRUE(before.count(n) || n.rfind("Ravlin_", 0) != 0) << n;
    EXPECT_EQ(after.count(name), 0u);
}

TEST(Logging, TimeString)
{
    const std::string year = getCurrentTimeString("%Y");
    ASSERT_EQ(year.size(), 256u);
    EXPECT_EQ(std::strlen(year.c_str()), 4u);
    EXPECT_TRUE(std::regex_match(std::string(year.c_str()), std::regex("[0-9]{4}")));
    EXPECT_EQ(getCurrentTimeString(""), "");
}

TEST(Logging, IntegerText)
{
    EXPECT_EQ(int_to_str(-42), "-42");
    EXPECT_EQ(int_to_wstr(0), L"0");
    EXPECT_EQ(int_to_wstr(-2147483647 - 1), L"-2147483648");
}

TEST(Logging, FileNameShape)
{
    const std::string name = getLogFileName();
    EXPECT_TRUE(std::regex_match(name, std::regex("Ravlin_x64_t[0-9]+_[0-9]{14}\\.txt"))) << name;
}
