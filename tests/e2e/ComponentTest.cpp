// The component driven through its exported functions, as the platform does.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include "ElfInfo.h"
#include "ComponentFixture.h"
#include "TestHost.h"
#include "VirtualSerialPort.h"

namespace {

using ComponentTest = ComponentFixture;

const wchar_t* const kEnglish[] = {L"GetVersion", L"GetDescription", L"GetLastError", L"GetParameters",
                                   L"SetParameter", L"Open", L"Close", L"DeviceTest",
                                   L"GetAdditionalActions", L"DoAdditionalAction"};
const wchar_t* const kRussian[] = {L"ПолучитьНомерВерсии", L"ПолучитьОписание", L"ПолучитьОшибку",
                                   L"ПолучитьПараметры", L"УстановитьПараметр", L"Подключить",
                                   L"Отключить", L"ТестУстройства", L"ПолучитьДополнительныеДействия",
                                   L"ВыполнитьДополнительноеДействие"};
const long kParamCounts[] = {0, 7, 1, 1, 2, 1, 1, 2, 1, 1};

}  // namespace

TEST(Exports, ExactlyTheFourEntryPoints)
{
    EXPECT_EQ(definedDynamicSymbols(testedLibrary()),
              (std::set<std::string>{"GetClassNames", "GetClassObject", "DestroyObject",
                                     "SetPlatformCapabilities"}));
}

TEST_F(ComponentTest, ClassNamesAndCreation)
{
    EXPECT_EQ(host.classNames(), L"InputDevice|CardReaderDevice");
    EXPECT_EQ(host.getClassNames(), host.getClassNames());
    // The text lives in the library's own image, not on the heap: a host that
    // loads and unloads the library again and again leaks nothing.
    Dl_info where{};
    ASSERT_NE(dladdr(host.getClassNames(), &where), 0);
    EXPECT_EQ(where.dli_fname, testedLibrary());
    EXPECT_EQ(host.setPlatformCapabilities(12345), 1);

    const auto unknown = toShort(L"Scanner");
    IComponentBase* none = nullptr;
    EXPECT_EQ(host.getClassObject(unknown.data(), &none), 0);
    EXPECT_EQ(none, nullptr);
    const auto lower = toShort(L"inputdevice");
    EXPECT_EQ(host.getClassObject(lower.data(), &none), 0);
    EXPECT_EQ(host.destroy(none), -1);

    IComponentBase* card = host.createRaw(L"CardReaderDevice");
    ASSERT_NE(card, nullptr);
    // An object already in place is handed back, nothing new is made.
    const auto name = toShort(L"InputDevice");
    EXPECT_EQ(host.getClassObject(name.data(), &card), reinterpret_cast<long>(card));
    EXPECT_EQ(host.destroy(card), 0);
    EXPECT_EQ(card, nullptr);
}

TEST_F(ComponentTest, InitSetsQueueDepthAndRefusesNull)
{
    IComponentBase* raw = host.createRaw(L"InputDevice");
    created.push_back(raw);
    EXPECT_FALSE(raw->Init(nullptr));
    EXPECT_FALSE(raw->setMemManager(nullptr));
    EXPECT_TRUE(raw->setMemManager(&host.memory));
    EXPECT_TRUE(raw->Init(&host.connection));
    EXPECT_EQ(host.connection.queueDepth(), 4096);
    EXPECT_EQ(raw->GetInfo(), 2004);
    raw->Done();
}

TEST_F(ComponentTest, PropertiesAndMethodTable)
{
    Component c = make();
    IComponentBase* o = c.object();
    EXPECT_EQ(o->GetNProps(), 0);
    const auto any = toShort(L"Anything");
    EXPECT_EQ(o->FindProp(any.data()), -1);
    EXPECT_EQ(o->GetPropName(0, 0), nullptr);
    tVariant v{};
    EXPECT_FALSE(o->GetPropVal(0, &v));
    EXPECT_FALSE(o->SetPropVal(0, &v));
    EXPECT_FALSE(o->IsPropReadable(0));
    EXPECT_FALSE(o->IsPropWritable(0));
    EXPECT_FALSE(o->CallAsProc(0, nullptr, 0));
    EXPECT_EQ(o->GetNMethods(), 10);

    for (long i = 0; i < 10; ++i) {
        const auto en = toShort(kEnglish[i]);
        const auto ru = toShort(kRussian[i]);
        EXPECT_EQ(o->FindMethod(en.data()), i);
        EXPECT_EQ(o->FindMethod(ru.data()), i);
        EXPECT_EQ(o->GetNParams(i), kParamCounts[i]);
        EXPECT_TRUE(o->HasRetVal(i));
        for (long alias : {0L, 1L}) {
            const unsigned short* name = o->GetMethodName(i, alias);
            EXPECT_EQ(fromShort(name), alias == 0 ? kEnglish[i] : kRussian[i]);
            void* b = const_cast<unsigned short*>(name);
            host.memory.FreeMemory(&b);
        }
    }
    const auto lower = toShort(L"getversion");
    EXPECT_EQ(o->FindMethod(lower.data()), -1);
    const auto open = toShort(L"Подключить");
    EXPECT_EQ(o->FindMethod(open.data()), 5);
    EXPECT_EQ(o->FindMethod(nullptr), -1);
    EXPECT_EQ(o->GetMethodName(3, 2), nullptr);
    EXPECT_EQ(o->GetMethodName(10, 0), nullptr);
    EXPECT_EQ(o->GetMethodName(-1, 0), nullptr);
    EXPECT_EQ(o->GetNParams(10), 0);

    tVariant def{};
    def.vt = VTYPE_I4;
    EXPECT_FALSE(o->GetParamDefValue(1, 0, &def));
    EXPECT_EQ(def.vt, VTYPE_EMPTY);
    tVariant result{};
    EXPECT_FALSE(o->CallAsFunc(10, &result, nullptr, 0));
}

TEST_F(ComponentTest, VersionDescriptionAndActions)
{
    Component c = make();
    CallResult r = c.call(L"GetVersion");
    EXPECT_TRUE(r.returned);
    EXPECT_EQ(r.result.text, L"9.0.8.10");

    r = c.call(L"ПолучитьОписание");
    ASSERT_TRUE(r.returned);
    EXPECT_TRUE(r.result.boolean);
    EXPECT_EQ(r.params[0].text, L"Zandor: Драйвер устройств ввода");
    EXPECT_EQ(r.params[1].text, L"Драйвер для подключения устройств ввода");
    EXPECT_EQ(r.params[2].text, L"СканерШтрихкода");
    EXPECT_EQ(r.params[3].type, VTYPE_I4);
    EXPECT_EQ(r.params[3].integer, 2004);
    EXPECT_EQ(r.params[4].type, VTYPE_BOOL);
    EXPECT_FALSE(r.params[4].boolean);
    EXPECT_TRUE(r.params[5].boolean);
    EXPECT_EQ(r.params[6].text.rfind(L"https://", 0), 0u);

    r = c.call(L"GetAdditionalActions");
    EXPECT_TRUE(r.returned);
    EXPECT_TRUE(r.result.boolean);
    EXPECT_EQ(r.params[0].type, VTYPE_PWSTR);
    EXPECT_EQ(r.params[0].text, L"");

    r = c.call(L"DoAdditionalAction", {intVar(5)});
    EXPECT_FALSE(r.returned);
    EXPECT_EQ(r.params[0].integer, 5);  // left untouched

    r = c.call(L"DeviceTest", {intVar(1), intVar(2)});
    EXPECT_TRUE(r.returned);
    EXPECT_TRUE(r.result.boolean);
    EXPECT_EQ(r.params[0].type, VTYPE_PWSTR);
    EXPECT_EQ(r.params[1].type, VTYPE_PWSTR);
    EXPECT_EQ(r.params[0].text, L"");
}

TEST_F(ComponentTest, SetLocaleOnlyEverSwitchesToRussian)
{
    Component c = make();  // created while the locale is Russian
    const auto en = toShort(L"en_US");
    c.object()->SetLocale(en.data());
    EXPECT_EQ(c.call(L"GetDescription").params[0].text, L"Zandor: Драйвер устройств ввода");
    c.object()->SetLocale(nullptr);
    const auto rus = toShort(L"RUS");
    c.object()->SetLocale(rus.data());
    EXPECT_EQ(c.call(L"GetLastError").params[0].text, L"Ошибка подключения. Проверьте доступность устройства.");
}

TEST_F(ComponentTest, ErrorTextAndParameters)
{
    Component c = make();
    CallResult r = c.call(L"GetLastError");
    EXPECT_TRUE(r.returned);
    EXPECT_EQ(r.result.type, VTYPE_I4);
    EXPECT_EQ(r.result.integer, 1);
    EXPECT_EQ(r.params[0].text, L"Ошибка подключения. Проверьте доступность устройства.");

    r = c.call(L"GetParameters");
    EXPECT_TRUE(r.returned);
    EXPECT_TRUE(r.result.boolean);
    EXPECT_EQ(r.params[0].type, VTYPE_PWSTR);

    EXPECT_TRUE(c.setParameter(L"Speed", intVar(19200)));
    EXPECT_TRUE(c.setParameter(L"Speed", c.str(L"fast")));  // rejected value, still success
    EXPECT_FALSE(c.setParameter(L"port", intVar(1)));
    EXPECT_FALSE(c.setParameter(L"", intVar(1)));
    r = c.call(L"SetParameter", {intVar(3), intVar(1)});  // a name that is no string
    EXPECT_TRUE(r.returned);
    EXPECT_FALSE(r.result.boolean);
    for (const wchar_t* key : {L"Port", L"KeyboardDevice", L"DataBits", L"StopBit", L"Speed", L"Prefix",
                               L"Suffix", L"Timeout", L"TimeoutCOM", L"COMEncoding", L"GSSymbolKey",
                               L"LogFileFolder", L"EquipmentType", L"OutputDataType",
                               L"IgnoreKeyboardState"})
        EXPECT_TRUE(c.setParameter(key, intVar(0))) << key;
}

TEST_F(ComponentTest, OpenAndCloseByIdWithCounter)
{
    VirtualSerialPort line("ttyUSB0");
    Component c = make();
    ASSERT_TRUE(c.setParameter(L"Port", intVar(129)));
    const std::wstring first = c.open();
    EXPECT_EQ(first, L"InputDevice#1");
    EXPECT_TRUE(c.close(first));
    EXPECT_FALSE(c.close(first));
    EXPECT_FALSE(c.close(L"InputDevice#7"));
    const std::wstring second = c.open();
    EXPECT_EQ(second, L"InputDevice#2");
    EXPECT_TRUE(c.close(second));  // a line has one reader

    Component card = make(L"CardReaderDevice");
    ASSERT_TRUE(card.setParameter(L"Port", intVar(129)));
    EXPECT_EQ(card.open(), L"CardReaderDevice#1");
}

TEST_F(ComponentTest, FailedOpenLeavesParameterAndCountsAnyway)
{
    Component c = make();
    ASSERT_TRUE(c.setParameter(L"Port", intVar(129 + 40)));
    CallResult r = c.call(L"Open", {intVar(77)});
    EXPECT_TRUE(r.returned);
    EXPECT_FALSE(r.result.boolean);
    EXPECT_EQ(r.params[0].type, VTYPE_I4);
    EXPECT_EQ(r.params[0].integer, 77);
    VirtualSerialPort line("ttyUSB0");
    ASSERT_TRUE(c.setParameter(L"Port", intVar(129)));
    EXPECT_EQ(c.open(), L"InputDevice#2");
}

TEST_F(ComponentTest, CallsBeforeInitOrMemoryManagerFailSafely)
{
    IComponentBase* raw = host.createRaw(L"InputDevice");
    created.push_back(raw);
    tVariant result{};
    tVariant params[7] = {};
    EXPECT_FALSE(raw->CallAsFunc(0, &result, params, 0));  // no memory manager yet
    unsigned short* name = nullptr;
    EXPECT_FALSE(raw->RegisterExtensionAs(&name));
    for (long m = 0; m < 10; ++m) {
        std::fill(std::begin(params), std::end(params), tVariant{});
        raw->CallAsFunc(m, &result, params, 7);
    }
    raw->setMemManager(&host.memory);
    EXPECT_FALSE(raw->CallAsFunc(5, &result, params, 1));  // Open before Init
    EXPECT_FALSE(raw->CallAsFunc(2, &result, params, 1));
    EXPECT_FALSE(raw->CallAsFunc(1, &result, nullptr, 7));
    EXPECT_FALSE(raw->CallAsFunc(1, &result, params, 3));
    EXPECT_FALSE(raw->CallAsFunc(1, nullptr, params, 7));
    const unsigned short* method = raw->GetMethodName(0, 0);
    void* b = const_cast<unsigned short*>(method);
    host.memory.FreeMemory(&b);
    for (auto& p : params)
        if (p.vt == VTYPE_PWSTR && p.pwstrVal) {
            void* s = p.pwstrVal;
            host.memory.FreeMemory(&s);
        }
}

TEST_F(ComponentTest, FailingAllocatorGivesFalseNotACrash)
{
    Component c = make();
    host.memory.failAllocations = true;
    EXPECT_FALSE(c.call(L"GetVersion").returned);
    CallResult r = c.call(L"GetDescription");
    EXPECT_TRUE(r.returned);
    EXPECT_TRUE(r.params[0].nullString);
    unsigned short* name = nullptr;
    EXPECT_FALSE(c.object()->RegisterExtensionAs(&name));
    EXPECT_EQ(c.object()->GetMethodName(0, 0), nullptr);
    host.memory.failAllocations = false;
}
