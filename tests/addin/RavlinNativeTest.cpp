// The component in-process, where the tests may switch the process to English.
#include "addin/RavlinNative.h"

#include <gtest/gtest.h>

#include "TestHost.h"
#include "VirtualSerialPort.h"
#include "addin/EventNames.h"
#include "performer/AppSettings.h"

namespace {

class EnglishComponent : public ::testing::Test {
protected:
    void SetUp() override
    {
        AppSettings::setLocale(1);
        component = std::make_unique<RavlinNative>(L"InputDevice");
        component->setMemManager(&memory);
        component->Init(&connection);
    }
    void TearDown() override
    {
        component.reset();
        AppSettings::setLocale(0);
    }
    HostMemory memory;
    HostConnection connection;
    std::unique_ptr<RavlinNative> component;
};

}  // namespace

TEST(EventNameTable, KeysAndFallbacks)
{
    EXPECT_EQ(eventNameFor(1, EquipmentCode(16), OutputDataType(0)), L"Barcode");
    EXPECT_EQ(eventNameFor(1, EquipmentCode(16), OutputDataType(2)), L"BarcodeBase64");
    EXPECT_EQ(eventNameFor(1, EquipmentCode(32), OutputDataType(0)), L"TrackData");
    EXPECT_EQ(eventNameFor(1, EquipmentCode(32), OutputDataType(2)), L"TrackDataBase64");
    EXPECT_EQ(eventNameFor(0, EquipmentCode(16), OutputDataType(0)), L"Штрихкод");
    EXPECT_EQ(eventNameFor(0, EquipmentCode(16), OutputDataType(2)), L"ШтрихкодBase64");
    EXPECT_EQ(eventNameFor(0, EquipmentCode(32), OutputDataType(0)), L"ДанныеКарты");
    EXPECT_EQ(eventNameFor(0, EquipmentCode(32), OutputDataType(2)), L"ДанныеКартыBase64");
    EXPECT_EQ(eventNameFor(1, EquipmentCode(16), OutputDataType(1)), L"Barcode");  // human-readable has no name of its own
    EXPECT_EQ(eventNameFor(1, EquipmentCode(32), OutputDataType(1)), L"Barcode");
    EXPECT_EQ(eventNameFor(1, EquipmentCode(64), OutputDataType(0)), L"Barcode");
    EXPECT_EQ(eventNameFor(1, EquipmentCode(0), OutputDataType(2)), L"Barcode");
    EXPECT_EQ(eventNameFor(2, EquipmentCode(16), OutputDataType(0)), L"Штрихкод");
    EXPECT_EQ(eventNameFor(7, EquipmentCode(32), OutputDataType(0)), L"ДанныеКарты");
}

TEST_F(EnglishComponent, DeliveryForms)
{
    component->OnInput(L"InputDevice#1", EquipmentCode(16), OutputDataType(1), L"MTINCg==");  // "12\r\n"
    component->OnInput(L"InputDevice#1", EquipmentCode(32), OutputDataType(2), L"O1RyYWNr");
    component->OnInput(L"InputDevice#1", EquipmentCode(64), OutputDataType(0), L"QUI=");
    component->OnInput(L"InputDevice#1", EquipmentCode(16), OutputDataType(0), L"");
    const auto events = connection.events();
    ASSERT_EQ(events.size(), 4u);
    EXPECT_EQ(events[0].name, L"Barcode");
    EXPECT_EQ(events[0].data, L"12(013010)");
    EXPECT_EQ(events[1].name, L"TrackDataBase64");
    EXPECT_EQ(events[1].data, L"O1RyYWNr");
    EXPECT_EQ(events[2].name, L"Barcode");
    EXPECT_EQ(events[2].data, L"AB");
    EXPECT_EQ(events[3].data, L"");
}

TEST_F(EnglishComponent, EnglishTextsThroughTheMethods)
{
    Component c(component.get(), memory);
    CallResult r = c.call(L"GetDescription");
    EXPECT_EQ(r.params[0].text, L"Zandor: Input device driver");
    EXPECT_EQ(r.params[1].text, L"Driver for input devices");
    EXPECT_EQ(r.params[2].text, L"СканерШтрихкода");
    EXPECT_EQ(c.call(L"GetLastError").params[0].text, L"Connection error. Check device availability.");
}

TEST_F(EnglishComponent, SerialScanRaisesEnglishEvents)
{
    VirtualSerialPort line("ttyUSB0");
    VirtualSerialPort second("ttyUSB1");
    Component c(component.get(), memory);
    ASSERT_TRUE(c.setParameter(L"Port", intVar(129)));
    ASSERT_TRUE(c.setParameter(L"EquipmentType", c.str(L"СчитывательМагнитныхКарт")));
    ASSERT_TRUE(c.setParameter(L"OutputDataType", intVar(2)));
    ASSERT_EQ(c.open(), L"InputDevice#1");
    line.write("AB\r");
    const auto events = connection.waitForEvents(1);
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0].name, L"TrackDataBase64");
    EXPECT_EQ(events[0].data, L"QUI=");
    ASSERT_TRUE(c.setParameter(L"OutputDataType", intVar(0)));
    ASSERT_TRUE(c.setParameter(L"EquipmentType", c.str(L"СканерШтрихкода")));
    ASSERT_TRUE(c.setParameter(L"Port", intVar(130)));
    ASSERT_EQ(c.open(), L"InputDevice#2");
    second.write("CD\r");
    ASSERT_EQ(connection.waitForEvents(2).size(), 2u);
    line.write("EF\r");
    const auto more = connection.waitForEvents(3);
    ASSERT_EQ(more.size(), 3u);
    EXPECT_EQ(more[1].name, L"Barcode");
    EXPECT_EQ(more[1].data, L"CD");
    EXPECT_EQ(more[2].name, L"TrackDataBase64");
    EXPECT_EQ(more[2].data, L"RUY=");
}

TEST_F(EnglishComponent, SetLocaleRuSwitchesForGood)
{
    const auto en = toShort(L"en");
    component->SetLocale(en.data());
    EXPECT_EQ(AppSettings::locale(), 1u);
    const auto ru = toShort(L"ru_RU");
    component->SetLocale(ru.data());
    EXPECT_EQ(AppSettings::locale(), 0u);  // isRussian is now set...
    component->SetLocale(en.data());
    EXPECT_EQ(AppSettings::locale(), 0u);  // ...and never cleared
    AppSettings::setLocale(1);
    const auto rus = toShort(L"RUS");
    component->SetLocale(rus.data());
    EXPECT_EQ(AppSettings::locale(), 0u);
    EXPECT_EQ(memory.liveBlocks(), 0u);
}

TEST(ComponentWithoutConnection, EmptyInputIsIgnored)
{
    RavlinNative component(L"InputDevice");
    component.OnInput(L"InputDevice#1", EquipmentCode(16), OutputDataType(0), L"");
    component.OnInput(L"InputDevice#1", EquipmentCode(16), OutputDataType(0), L"MTIz");  // no connection: nothing to call
}
