// The performer in-process: setters, device map and captured settings.
#include "performer/RavlinPerformerLinux.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <cstring>
#include <mutex>

#include "TestHost.h"
#include "TestUtil.h"
#include "VirtualSerialPort.h"
#include "abi/StringConversion.h"
#include "addin/EventNames.h"
#include "performer/AppSettings.h"

using namespace std::chrono_literals;

namespace {

struct Input {
    std::wstring id;
    EquipmentCode equipment;
    OutputDataType output;
    std::wstring data;
};

class PerformerTest : public ::testing::Test {
protected:
    PerformerTest()
        : performer([this](const std::wstring& id, EquipmentCode eq, OutputDataType out, const std::wstring& data) {
              std::lock_guard<std::mutex> g(lock);
              inputs.push_back({id, eq, out, data});
              arrived.notify_all();
          })
    {
    }
    void TearDown() override { AppSettings::setLocale(0); }

    bool set(const wchar_t* name, const tVariant& v)
    {
        const tVariant r = performer.SetParameter(name, v);
        EXPECT_EQ(r.vt, VTYPE_BOOL);
        return r.bVal;
    }
    tVariant text(const std::wstring& s)
    {
        units.push_back(toShort(s));
        tVariant v{};
        v.vt = VTYPE_PWSTR;
        v.pwstrVal = units.back().data();
        v.wstrLen = static_cast<uint32_t>(s.size());
        return v;
    }
    // The name a text event of the next device would carry.
    std::wstring eventName() const
    {
        return eventNameFor(AppSettings::locale(), performer.deviceSettings().equipmentCode, OutputDataType::Text);
    }
    std::vector<Input> waitFor(size_t n)
    {
        std::unique_lock<std::mutex> g(lock);
        arrived.wait_for(g, kHangTimeout, [&] { return inputs.size() >= n; });
        return inputs;
    }

    std::mutex lock;
    std::condition_variable arrived;
    std::vector<Input> inputs;
    std::vector<std::vector<unsigned short>> units;
    RavlinPerformerLinux performer;
};

}  // namespace

TEST_F(PerformerTest, InitialValues)
{
    EXPECT_EQ(performer.nextDevice().port, 1u);
    EXPECT_EQ(performer.nextDevice().speed, 9600u);
    EXPECT_EQ(performer.nextDevice().dataBits, 8u);
    EXPECT_EQ(performer.nextDevice().stopBits, 0u);
    EXPECT_EQ(performer.nextDevice().suffix, "\r");
    EXPECT_EQ(performer.nextDevice().comTimeout, 5);
    EXPECT_EQ(performer.nextDevice().comEncoding, L"UTF-8");
    EXPECT_EQ(performer.nextDevice().prefix, L"");
    EXPECT_EQ(performer.nextDevice().keyboardTimeout, 75);
    EXPECT_EQ(performer.nextDevice().gsKey, -1);
    EXPECT_FALSE(performer.nextDevice().testMode);
    EXPECT_TRUE(performer.nextDevice().ignoreKeyboardState);
    EXPECT_EQ(performer.deviceSettings().equipmentCode, EquipmentCode::BarcodeScanner);
    EXPECT_EQ(performer.deviceSettings().outputDataType, OutputDataType::Text);
    EXPECT_EQ(performer.deviceSettings().setters.size(), 15u);
}

TEST_F(PerformerTest, PrefixAndSuffixAreCharacterCodes)
{
    EXPECT_TRUE(set(L"Prefix", intVar(-1)));
    EXPECT_EQ(performer.nextDevice().prefix, L"");
    EXPECT_TRUE(set(L"Prefix", intVar(2)));
    EXPECT_EQ(performer.nextDevice().prefix, std::wstring(1, L'\x02'));
    EXPECT_TRUE(set(L"Prefix", intVar(0)));
    EXPECT_EQ(performer.nextDevice().prefix, std::wstring(1, L'\0'));
    EXPECT_TRUE(set(L"Suffix", intVar(10)));
    EXPECT_EQ(performer.nextDevice().suffix, "\n");
    EXPECT_TRUE(set(L"Suffix", intVar(-1)));
    EXPECT_EQ(performer.nextDevice().suffix, "");
}

TEST_F(PerformerTest, EquipmentType)
{
    EXPECT_TRUE(set(L"EquipmentType", intVar(32)));  // rejected, still reported as success
    EXPECT_EQ(performer.deviceSettings().equipmentCode, EquipmentCode::BarcodeScanner);
    AppSettings::setLocale(1);
    EXPECT_TRUE(set(L"EquipmentType", text(L"СчитывательМагнитныхКарт")));
    EXPECT_EQ(eventName(), L"TrackData");
    EXPECT_EQ(performer.deviceSettings().equipmentCode, EquipmentCode::CardReader);
    EXPECT_TRUE(set(L"EquipmentType", text(L"")));
    EXPECT_TRUE(set(L"EquipmentType", text(L"Принтер")));
    EXPECT_EQ(performer.deviceSettings().equipmentCode, EquipmentCode::CardReader);
    EXPECT_EQ(eventName(), L"TrackData");
    AppSettings::setLocale(0);
    EXPECT_TRUE(set(L"EquipmentType", text(L"УстройствоВвода")));
    EXPECT_EQ(eventName(), L"Штрихкод");
    EXPECT_EQ(performer.deviceSettings().equipmentCode, EquipmentCode::BarcodeScanner);
}

TEST_F(PerformerTest, TypeChecksOfSetters)
{
    EXPECT_TRUE(set(L"IgnoreKeyboardState", intVar(1)));
    EXPECT_TRUE(performer.nextDevice().ignoreKeyboardState);
    EXPECT_TRUE(set(L"IgnoreKeyboardState", boolVar(false)));
    EXPECT_FALSE(performer.nextDevice().ignoreKeyboardState);
    EXPECT_TRUE(set(L"LogFileFolder", text(L"/var/log")));
    EXPECT_TRUE(set(L"LogFileFolder", intVar(3)));
    EXPECT_FALSE(set(L"port", intVar(1)));
    EXPECT_TRUE(set(L"Speed", text(L"115200")));
    EXPECT_EQ(performer.nextDevice().speed, 9600u);
    EXPECT_TRUE(set(L"Speed", intVar(14400)));
    EXPECT_EQ(performer.nextDevice().speed, 14400u);
    EXPECT_TRUE(set(L"KeyboardDevice", intVar(5)));  // not a string: not read as one
    EXPECT_EQ(performer.nextDevice().keyboardDevice, "");
    EXPECT_TRUE(set(L"KeyboardDevice", text(L"Honeywell Scanner")));
    EXPECT_EQ(performer.nextDevice().keyboardDevice, "Honeywell Scanner");
    EXPECT_TRUE(set(L"KeyboardDevice", tVariant{}));  // nothing: the empty name
    EXPECT_EQ(performer.nextDevice().keyboardDevice, "");
    EXPECT_TRUE(set(L"KeyboardDevice", text(L"Honeywell Imaging & Mobility <1900>")));
    EXPECT_EQ(performer.nextDevice().keyboardDevice, "Honeywell Imaging   Mobility  1900 ");
    tVariant nullText = text(L"");
    nullText.pwstrVal = nullptr;
    nullText.wstrLen = 1000;
    EXPECT_TRUE(set(L"COMEncoding", nullText));
    EXPECT_EQ(performer.nextDevice().comEncoding, L"");
    EXPECT_TRUE(set(L"Port", intVar(0)));
    EXPECT_EQ(performer.nextDevice().port, 0u);
    EXPECT_TRUE(set(L"TimeoutCOM", intVar(-3)));
    EXPECT_EQ(performer.nextDevice().comTimeout, -3);
    EXPECT_TRUE(set(L"GSSymbolKey", intVar(7)));
    EXPECT_EQ(performer.nextDevice().gsKey, 7);
    EXPECT_TRUE(set(L"OutputDataType", intVar(9)));
    EXPECT_EQ(performer.deviceSettings().outputDataType, OutputDataType(9));
    EXPECT_EQ(performer.SetParameter(nullptr, intVar(1)).bVal, false);
}

TEST_F(PerformerTest, NoReadBackAndFixedErrorText)
{
    const tVariant v = performer.GetParameter(L"Speed");
    const tVariant zero{};
    EXPECT_EQ(std::memcmp(&v, &zero, sizeof v), 0);
    EXPECT_EQ(performer.GetLastError(true), L"Ошибка подключения. Проверьте доступность устройства.");
    EXPECT_EQ(performer.GetLastError(false), L"Connection error. Check device availability.");
}

TEST_F(PerformerTest, DefaultPortIsFirstSerialNotKeyboard)
{
    VirtualSerialPort line("ttyS0");
    ASSERT_TRUE(performer.OpenDevice(L"X#1"));
    line.write("1\r");
    const auto got = waitFor(1);
    ASSERT_EQ(got.size(), 1u);
    EXPECT_EQ(got[0].id, L"X#1");
    EXPECT_EQ(got[0].data, L"MQ==");
}

TEST_F(PerformerTest, PortZeroUsesTheKeyboardFactory)
{
    VirtualSerialPort line("ttyS0");
    ASSERT_TRUE(set(L"Port", intVar(0)));
    ASSERT_TRUE(set(L"KeyboardDevice", text(L"no such keyboard")));
    EXPECT_FALSE(performer.OpenDevice(L"X#1"));  // the serial line would have opened
    EXPECT_EQ(performer.openDeviceCount(), 0u);
}

TEST_F(PerformerTest, SameIdTwiceKeepsTheFirstSource)
{
    VirtualSerialPort line("ttyS0");
    const size_t fds = openDescriptorCount();
    ASSERT_TRUE(performer.OpenDevice(L"X#1"));
    const size_t withOne = openDescriptorCount();
    EXPECT_TRUE(performer.OpenDevice(L"X#1"));
    EXPECT_EQ(performer.openDeviceCount(), 1u);
    EXPECT_EQ(openDescriptorCount(), withOne);  // the second source is already gone
    EXPECT_TRUE(performer.CloseDevice(L"X#1"));
    EXPECT_FALSE(performer.CloseDevice(L"X#1"));
    EXPECT_FALSE(performer.CloseDevice(L"never"));
    EXPECT_EQ(openDescriptorCount(), fds);
}

TEST_F(PerformerTest, OpenDeviceKeepsOutputTypeItWasOpenedWith)
{
    VirtualSerialPort a("ttyUSB0");
    VirtualSerialPort b("ttyUSB1");
    ASSERT_TRUE(set(L"Port", intVar(129)));
    ASSERT_TRUE(set(L"OutputDataType", intVar(2)));
    ASSERT_TRUE(set(L"EquipmentType", text(L"СчитывательМагнитныхКарт")));
    ASSERT_TRUE(performer.OpenDevice(L"A"));
    ASSERT_TRUE(set(L"OutputDataType", intVar(0)));
    ASSERT_TRUE(set(L"EquipmentType", text(L"СканерШтрихкода")));
    ASSERT_TRUE(set(L"Port", intVar(130)));
    ASSERT_TRUE(performer.OpenDevice(L"B"));
    a.write("1\r");
    ASSERT_EQ(waitFor(1).size(), 1u);
    b.write("2\r");
    const auto got = waitFor(2);
    ASSERT_EQ(got.size(), 2u);
    EXPECT_EQ(got[0].id, L"A");
    EXPECT_EQ(got[0].output, OutputDataType::Base64);
    EXPECT_EQ(got[0].equipment, EquipmentCode::CardReader);
    EXPECT_EQ(got[1].id, L"B");
    EXPECT_EQ(got[1].output, OutputDataType::Text);
    EXPECT_EQ(got[1].equipment, EquipmentCode::BarcodeScanner);
}
