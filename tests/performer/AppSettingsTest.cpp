#include "performer/AppSettings.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "performer/KeyValue.h"

namespace {
tVariant intValue(int v) { tVariant t{}; t.vt = VTYPE_I4; t.lVal = v; return t; }

class AppSettingsTest : public ::testing::Test {
protected:
    void TearDown() override
    {
        AppSettings::setLocale(0);
        AppSettings::setIODataType(0);
        AppSettings::setDeviceType(16);
    }
};
}  // namespace

TEST_F(AppSettingsTest, Defaults)
{
    EXPECT_EQ(AppSettings::locale(), 0u);
    EXPECT_EQ(AppSettings::ioDataType(), 0u);
    EXPECT_EQ(AppSettings::deviceType(), 16u);
}

TEST_F(AppSettingsTest, OutOfRangeCodesAreIgnored)
{
    AppSettings::setLocale(1);
    AppSettings::setLocale(2);
    EXPECT_EQ(AppSettings::locale(), 1u);
    AppSettings::setIODataType(2);
    AppSettings::setIODataType(3);
    EXPECT_EQ(AppSettings::ioDataType(), 2u);
    AppSettings::setDeviceType(33);
    EXPECT_EQ(AppSettings::deviceType(), 16u);
    AppSettings::setDeviceType(20);
    EXPECT_EQ(AppSettings::deviceType(), 20u);
}

TEST_F(AppSettingsTest, ValueOfUnsetKeyIsDefaultAndNotInserted)
{
    const tVariant def = intValue(42);
    EXPECT_EQ(AppSettings::value(L"never-set", def).lVal, 42);
    EXPECT_EQ(AppSettings::value(L"never-set", intValue(7)).lVal, 7);
    AppSettings::setValue(L"k", intValue(1));
    AppSettings::setValue(L"k", intValue(2));
    EXPECT_EQ(AppSettings::value(L"k", def).lVal, 2);
}

TEST_F(AppSettingsTest, ManyThreadsAtOnce)
{
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t)
        threads.emplace_back([t] {
            for (int i = 0; i < 2000; ++i) {
                AppSettings::setLocale(static_cast<uint32_t>(i & 1));
                const uint32_t l = AppSettings::locale();
                EXPECT_LE(l, 1u);
                AppSettings::setValue(L"thread" + std::to_wstring(t), intValue(i));
                EXPECT_EQ(AppSettings::value(L"thread" + std::to_wstring(t), intValue(-1)).lVal, i);
                AppSettings::setDeviceType(static_cast<uint32_t>(i % 40));
                EXPECT_LE(AppSettings::deviceType(), 32u);
            }
        });
    for (auto& th : threads)
        th.join();
}

TEST(KeyValueTest, CopiesShareUntilWrite)
{
    KeyValue<std::wstring, int> a;
    a.setValue(L"x", 1);
    KeyValue<std::wstring, int> b = a;
    EXPECT_TRUE(a.sharesWith(b));
    b.setValue(L"x", 2);
    b.setValue(L"y", 3);
    EXPECT_FALSE(a.sharesWith(b));
    EXPECT_EQ(a.value(L"x", 0), 1);
    EXPECT_EQ(a.value(L"y", -1), -1);
    EXPECT_EQ(b.value(L"x", 0), 2);
    EXPECT_EQ(b.value(L"y", 0), 3);

    // A sole owner writes in place.
    KeyValue<std::wstring, int> c;
    KeyValue<std::wstring, int> probe = c;
    probe = KeyValue<std::wstring, int>();
    c.setValue(L"z", 5);
    KeyValue<std::wstring, int> d = c;
    d = KeyValue<std::wstring, int>();
    EXPECT_EQ(c.value(L"z", 0), 5);
}

TEST(KeyValueTest, ValueNeverInserts)
{
    KeyValue<std::wstring, int> a;
    EXPECT_EQ(a.value(L"missing", 9), 9);
    KeyValue<std::wstring, int> b = a;
    EXPECT_EQ(b.value(L"missing", 8), 8);
    EXPECT_TRUE(a.sharesWith(b));
}
