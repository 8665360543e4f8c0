// Codes on a pseudo-terminal reach the test host as external events.
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <thread>

#include "ComponentFixture.h"
#include "TestHost.h"
#include "TestUtil.h"
#include "VirtualSerialPort.h"

using namespace std::chrono_literals;
using testing::Field;
using testing::Optional;

namespace {

using SerialEvents = ComponentFixture;

}  // namespace

TEST_F(SerialEvents, BarcodeInAllThreeOutputForms)
{
    VirtualSerialPort line("ttyUSB0");
    Component c = makeOnPort(129);
    const std::wstring id = c.open();
    ASSERT_EQ(id, L"InputDevice#1");
    auto e = scan(line, "123\r");
    ASSERT_TRUE(e);
    EXPECT_EQ(e->source, L"InputDevice#1");
    EXPECT_EQ(e->name, L"Штрихкод");
    EXPECT_EQ(e->data, L"123");
    EXPECT_NE(e->thread, static_cast<pid_t>(syscall(SYS_gettid)));
    c.close(id);

    ASSERT_TRUE(c.setParameter(L"OutputDataType", intVar(1)));
    const std::wstring hrs = c.open();
    e = scan(line, "01\x1D" "21ab c\r");
    ASSERT_TRUE(e);
    EXPECT_EQ(e->name, L"Штрихкод");
    EXPECT_EQ(e->data, L"01(029)21ab(032)");  // the last character after a group is dropped
    c.close(hrs);

    ASSERT_TRUE(c.setParameter(L"OutputDataType", intVar(2)));
    c.open();
    e = scan(line, "123\r");
    ASSERT_TRUE(e);
    EXPECT_EQ(e->name, L"ШтрихкодBase64");
    EXPECT_EQ(e->data, L"MTIz");
}

TEST_F(SerialEvents, CardReaderEvents)
{
    VirtualSerialPort line("ttyUSB0");
    Component c = makeOnPort(129, L"CardReaderDevice");
    ASSERT_TRUE(c.setParameter(L"EquipmentType", c.str(L"СчитывательМагнитныхКарт")));
    const std::wstring id = c.open();
    EXPECT_EQ(id, L"CardReaderDevice#1");
    auto e = scan(line, ";1234567890=2512?\r");
    ASSERT_TRUE(e);
    EXPECT_EQ(e->source, L"CardReaderDevice#1");
    EXPECT_EQ(e->name, L"ДанныеКарты");
    EXPECT_EQ(e->data, L";1234567890=2512?");
    c.close(id);
    ASSERT_TRUE(c.setParameter(L"OutputDataType", intVar(2)));
    c.open();
    e = scan(line, "AB\r");
    ASSERT_TRUE(e);
    EXPECT_EQ(e->name, L"ДанныеКартыBase64");
    EXPECT_EQ(e->data, L"QUI=");
}

TEST_F(SerialEvents, UnknownOutputTypeFallsBackToText)
{
    VirtualSerialPort line("ttyUSB0");
    Component c = makeOnPort(129);
    ASSERT_TRUE(c.setParameter(L"OutputDataType", intVar(7)));
    c.open();
    const auto e = scan(line, "42\r");
    ASSERT_TRUE(e);
    EXPECT_EQ(e->name, L"Штрихкод");
    EXPECT_EQ(e->data, L"42");
}

TEST_F(SerialEvents, CyrillicInUtf8AndWindows1251)
{
    VirtualSerialPort line("ttyUSB0");
    Component c = makeOnPort(129);
    const std::wstring id = c.open();
    auto e = scan(line, "\xD0\x9F\xD1\x80\xD0\xB8\r");
    ASSERT_TRUE(e);
    EXPECT_EQ(e->data, L"При");
    // The text form decodes the bytes as UTF-8 whatever the line's encoding:
    // Windows-1251 letters do not survive it.
    e = scan(line, "a\xCF\xF0\xE8\r");
    ASSERT_TRUE(e);
    EXPECT_EQ(e->data, L"a");
    c.close(id);

    ASSERT_TRUE(c.setParameter(L"COMEncoding", c.str(L"Windows-1251")));
    ASSERT_TRUE(c.setParameter(L"OutputDataType", intVar(2)));
    c.open();
    // Windows-1251 bytes are delivered exactly in the Base64 form.
    e = scan(line, "\xCF\xF0\xE8\r");
    ASSERT_TRUE(e);
    EXPECT_EQ(e->data, L"z/Do");
}

TEST_F(SerialEvents, TwoDevicesOnOneComponent)
{
    VirtualSerialPort first("ttyUSB0");
    VirtualSerialPort second("ttyACM3");
    Component c = makeOnPort(129);
    const std::wstring a = c.open();
    ASSERT_TRUE(c.setParameter(L"Port", intVar(65 + 3)));
    const std::wstring b = c.open();
    EXPECT_EQ(a, L"InputDevice#1");
    EXPECT_EQ(b, L"InputDevice#2");
    EXPECT_THAT(scan(first, "A\r"), Optional(Field(&HostEvent::source, L"InputDevice#1")));
    EXPECT_THAT(scan(second, "B\r"), Optional(Field(&HostEvent::source, L"InputDevice#2")));
    EXPECT_THAT(scan(first, "C\r"), Optional(Field(&HostEvent::data, L"C")));
}

TEST_F(SerialEvents, SettingsAreCapturedAtOpen)
{
    VirtualSerialPort first("ttyUSB0");
    VirtualSerialPort second("ttyUSB1");
    Component c = makeOnPort(129);
    ASSERT_TRUE(c.setParameter(L"OutputDataType", intVar(2)));
    const std::wstring a = c.open();
    ASSERT_TRUE(c.setParameter(L"OutputDataType", intVar(0)));
    ASSERT_TRUE(c.setParameter(L"Port", intVar(130)));
    ASSERT_TRUE(c.setParameter(L"Suffix", intVar(10)));
    const std::wstring b = c.open();
    EXPECT_THAT(scan(first, "123\r"), Optional(Field(&HostEvent::data, L"MTIz")));
    EXPECT_THAT(scan(second, "123\n"), Optional(Field(&HostEvent::data, L"123")));
}

TEST_F(SerialEvents, DestroyWithOpenDevicesJoinsThreadsAndClosesDescriptors)
{
    VirtualSerialPort first("ttyUSB0");
    VirtualSerialPort second("ttyS2");
    const size_t fds = openDescriptorCount();
    pid_t readers[2] = {};
    {
        Component c = host.create(L"InputDevice");
        IComponentBase* o = c.object();
        c.setParameter(L"Port", intVar(129));
        ASSERT_FALSE(c.open().empty());
        c.setParameter(L"Port", intVar(3));
        ASSERT_FALSE(c.open().empty());
        // Each line's reader is the thread that delivers its code (other
        // threads, such as an emulator's own, may come and go meanwhile).
        const auto one = scan(first, "1\r");
        const auto two = scan(second, "2\r");
        ASSERT_THAT(one, Optional(Field(&HostEvent::data, L"1")));
        ASSERT_THAT(two, Optional(Field(&HostEvent::data, L"2")));
        readers[0] = one->thread;
        readers[1] = two->thread;
        EXPECT_NE(readers[0], readers[1]);
        EXPECT_EQ(threadIds().count(readers[0]), 1u);
        EXPECT_EQ(host.destroy(o), 0);
    }
    EXPECT_EQ(openDescriptorCount(), fds);
    for (pid_t reader : readers)
        EXPECT_EQ(threadIds().count(reader), 0u) << "reader thread " << reader << " still runs";
}

TEST_F(SerialEvents, UnpluggedScannerResumesAfterReplug)
{
    VirtualSerialPort line("ttyUSB0");
    Component c = makeOnPort(129);
    c.open();
    EXPECT_THAT(scan(line, "1\r"), Optional(Field(&HostEvent::data, L"1")));
    line.unplug();
    std::this_thread::sleep_for(300ms);
    line.plug();
    const size_t before = host.connection.events().size();
    EXPECT_TRUE(waitUntil([&] {
        line.write("2\r");
        return host.connection.waitForEvents(before + 1, 100ms).size() > before;
    }));
    const auto events = host.connection.events();
    ASSERT_GT(events.size(), before);
    EXPECT_EQ(events[before].data, L"2");
}

TEST_F(SerialEvents, InitAgainClosesTheEarlierDevices)
{
    VirtualSerialPort line("ttyUSB0");
    Component c = makeOnPort(129);
    c.open();
    const auto code = scan(line, "1\r");
    ASSERT_THAT(code, Optional(Field(&HostEvent::data, L"1")));
    EXPECT_EQ(threadIds().count(code->thread), 1u);
    EXPECT_TRUE(c.object()->Init(&host.connection));
    EXPECT_EQ(threadIds().count(code->thread), 0u) << "the earlier device's reader still runs";
    EXPECT_FALSE(c.close(L"InputDevice#1"));
    // A new performer starts from the initial parameters again.
    EXPECT_EQ(c.open(), L"");
    ASSERT_TRUE(c.setParameter(L"Port", intVar(129)));
    EXPECT_EQ(c.open(), L"InputDevice#3");
    EXPECT_THAT(scan(line, "5\r"), Optional(Field(&HostEvent::data, L"5")));
}
