// The serial reader on pseudo-terminals reached through its fixed /dev paths.
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <termios.h>
#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <random>
#include <thread>

#include "CodeSink.h"
#include "FramingModel.h"
#include "PrivateDev.h"
#include "VirtualSerialPort.h"
#include "input/InputDeviceComPort.h"
#include "input/InputDeviceComPortFactory.h"
#include "input/PortFamily.h"
#include "TestUtil.h"
#include "util/CharsetConversion.h"
#include "util/SymbolCodecs.h"

using namespace std::chrono_literals;

namespace {

using Sink = CodeSink;

termios attributesOf(const std::string& path)
{
    const int fd = open(path.c_str(), O_RDONLY | O_NOCTTY | O_NONBLOCK);
    termios t{};
    tcgetattr(fd, &t);
    close(fd);
    return t;
}

}  // namespace

TEST(SerialPaths, PortNumbersMapToDeviceFamilies)
{
    EXPECT_EQ(portDevicePath(1), "/dev/ttyS0");
    EXPECT_EQ(portDevicePath(64), "/dev/ttyS63");
    EXPECT_EQ(portDevicePath(65), "/dev/ttyACM0");
    EXPECT_EQ(portDevicePath(128), "/dev/ttyACM63");
    EXPECT_EQ(portDevicePath(129), "/dev/ttyUSB0");
    EXPECT_EQ(portDevicePath(130), "/dev/ttyUSB1");
    EXPECT_EQ(portDevicePath(0), "");
}

TEST(SerialReader, OpensEachFamilyThroughItsPath)
{
    for (auto [name, port] : {std::pair<const char*, uint32_t>{"ttyS0", 1}, {"ttyACM0", 65}, {"ttyUSB0", 129}}) {
        VirtualSerialPort line(name);
        Sink sink;
        auto source = InputDeviceComPortFactory().create(serialPort(port), sink.callback());
        ASSERT_TRUE(source) << name;
        line.write("123\r");
        EXPECT_EQ(sink.waitFor(1), std::vector<std::wstring>{L"MTIz"}) << name;
        EXPECT_NE(sink.readerThread(), static_cast<pid_t>(syscall(SYS_gettid)));
    }
}

TEST(SerialReader, LineIsRawAtTheConfiguredSpeed)
{
    VirtualSerialPort line("ttyS1");
    Sink sink;
    auto f = serialPort(2);
    f.speed = 14400;  // not a standard rate: falls back to 9600
    auto source = InputDeviceComPortFactory().create(f, sink.callback());
    ASSERT_TRUE(source);
    termios t = attributesOf(line.slavePath());
    EXPECT_EQ(cfgetispeed(&t), B9600);
    EXPECT_EQ(cfgetospeed(&t), B9600);
    EXPECT_EQ(t.c_lflag & (ICANON | ECHO), 0u);
    EXPECT_EQ(t.c_iflag & (ICRNL | IXON), 0u);
    source.reset();

    f.speed = 115200;
    source = InputDeviceComPortFactory().create(f, sink.callback());
    ASSERT_TRUE(source);
    t = attributesOf(line.slavePath());
    EXPECT_EQ(cfgetispeed(&t), B115200);
}

TEST(SerialReader, LineKeepsItsCharacterSizeParityAndStopBits)
{
    VirtualSerialPort line("ttyS1");
    {
        const int fd = open(line.slavePath().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
        termios t{};
        ASSERT_EQ(tcgetattr(fd, &t), 0);
        t.c_cflag = (t.c_cflag & ~CSIZE) | CS7 | PARENB | PARODD | CSTOPB;
        t.c_iflag |= ISTRIP;
        ASSERT_EQ(tcsetattr(fd, TCSANOW, &t), 0);
        close(fd);
    }
    CodeSink sink;
    auto source = InputDeviceComPortFactory().create(serialPort(2), sink.callback());
    ASSERT_TRUE(source);
    // A pseudo-terminal always runs 8 bits without parity whatever it is told,
    // so character size and parity enable cannot be seen here; the stop bits,
    // the parity sense and the stripping of the eighth bit can.
    const termios t = attributesOf(line.slavePath());
    EXPECT_EQ(t.c_cflag & (PARODD | CSTOPB), static_cast<tcflag_t>(PARODD | CSTOPB));
    EXPECT_EQ(t.c_iflag & ISTRIP, static_cast<tcflag_t>(ISTRIP));
    EXPECT_EQ(t.c_lflag & (ICANON | ECHO | ISIG), 0u);
    EXPECT_EQ(t.c_oflag & OPOST, 0u);
}

TEST(SerialReader, NoSuffixEndsCodeWhenLineGoesQuiet)
{
    VirtualSerialPort line("ttyUSB0");
    Sink sink;
    auto source = InputDeviceComPortFactory().create(serialPort(129, ""), sink.callback());
    ASSERT_TRUE(source);
    line.write("123");
    EXPECT_EQ(sink.waitFor(1), std::vector<std::wstring>{L"MTIz"});
}

TEST(SerialReader, SuffixAloneGivesNothing)
{
    VirtualSerialPort line("ttyUSB0");
    Sink sink;
    auto source = InputDeviceComPortFactory().create(serialPort(129), sink.callback());
    ASSERT_TRUE(source);
    line.write("\r");
    line.write("9\r");
    EXPECT_EQ(sink.waitFor(1), std::vector<std::wstring>{b64("9")});
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(sink.now().size(), 1u);
}

TEST(SerialReader, TwoCharacterSuffixTrimsItsLeadingByte)
{
    VirtualSerialPort line("ttyUSB0");
    Sink sink;
    auto source = InputDeviceComPortFactory().create(serialPort(129, "\n\r"), sink.callback());
    ASSERT_TRUE(source);
    line.write("AB\n\r");
    line.write("CDX\r");
    EXPECT_EQ(sink.waitFor(2), (std::vector<std::wstring>{b64("AB"), b64("CD")}));
}

TEST(SerialReader, CodeShorterThanSuffixIsDroppedAndReaderGoesOn)
{
    VirtualSerialPort line("ttyUSB0");
    Sink sink;
    auto source = InputDeviceComPortFactory().create(serialPort(129, "xy\r"), sink.callback());
    ASSERT_TRUE(source);
    line.write("A\r");
    line.write("ABCxy\r");
    EXPECT_EQ(sink.waitFor(1), std::vector<std::wstring>{b64("ABC")});
}

TEST(SerialReader, GapLongerThanTimeoutDropsUnfinishedCode)
{
    VirtualSerialPort line("ttyUSB0");
    Sink sink;
    auto source = InputDeviceComPortFactory().create(serialPort(129), sink.callback());
    ASSERT_TRUE(source);
    line.write("12");
    ASSERT_TRUE(line.waitUntilTaken());
    std::this_thread::sleep_for(1s);  // two hundred times the 5 ms window
    line.write("3\r");
    EXPECT_EQ(sink.waitFor(1), std::vector<std::wstring>{b64("3")});
}

TEST(SerialReader, BytesOneMillisecondApartStayOneCode)
{
    VirtualSerialPort line("ttyACM1");
    Sink sink;
    auto f = serialPort(66);
    f.comTimeout = 1000;  // a window that no pause of a descheduled writer reaches
    auto source = InputDeviceComPortFactory().create(f, sink.callback());
    ASSERT_TRUE(source);
    const std::string code = "0104600439931256215Wp&C\x1D" "91EE06\x1D" "92Y2ZmNjQ5YmItOTE0Zi00";
    for (char c : code + "\r") {
        line.write(std::string(1, c));
        std::this_thread::sleep_for(1ms);
    }
    EXPECT_EQ(sink.waitFor(1), std::vector<std::wstring>{b64(code)});
}

TEST(SerialReader, AnyEncodingNameStillDeliversBase64)
{
    for (const wchar_t* encoding : {L"", L"KOI8-R", L"Windows-1251", L"UTF-8"}) {
        VirtualSerialPort line("ttyUSB0");
        Sink sink;
        auto f = serialPort(129);
        f.comEncoding = encoding;
        auto source = InputDeviceComPortFactory().create(f, sink.callback());
        ASSERT_TRUE(source);
        line.write("\xCF\xF0\xE8\r");  // Windows-1251 letters pass as raw bytes
        EXPECT_EQ(sink.waitFor(1), std::vector<std::wstring>{b64("\xCF\xF0\xE8")});
    }
}

TEST(SerialReader, OpenFailsWithoutATerminal)
{
    Sink sink;
    EXPECT_FALSE(InputDeviceComPortFactory().create(serialPort(129 + 7), sink.callback()));  // no node at all
    linkDevice("ttyS20", "/dev/null");
    EXPECT_FALSE(InputDeviceComPortFactory().create(serialPort(21), sink.callback()));
    linkDevice("ttyS21", "/dev/pts");
    EXPECT_FALSE(InputDeviceComPortFactory().create(serialPort(22), sink.callback()));
    unlinkDevice("ttyS20");
    unlinkDevice("ttyS21");
}

TEST(SerialReader, SourceThatNeverStartedDestroysAtOnce)
{
    Sink sink;
    auto source = std::make_unique<InputDeviceComPort>(sink.callback(), serialPort(129 + 9));
    EXPECT_FALSE(source->start());
    source.reset();
}

TEST(SerialReader, ThrowingConsumerDoesNotEndTheReader)
{
    VirtualSerialPort line("ttyUSB0");
    Sink sink;
    int calls = 0;
    DataCallback inner = sink.callback();
    auto source = InputDeviceComPortFactory().create(serialPort(129), [&](const std::wstring& t) {
        if (calls++ == 0)
            throw std::runtime_error("consumer failed");
        inner(t);
    });
    ASSERT_TRUE(source);
    line.write("1\r");
    line.write("2\r");
    EXPECT_EQ(sink.waitFor(1), std::vector<std::wstring>{b64("2")});
}

TEST(SerialReader, AgreesWithModelOverRandomStreamsAndPauses)
{
    // One line for each suffix, all given the same bursts. The quiet window
    // is far longer than a busy machine stretches a short pause, and a long
    // pause starts only once each reader has taken the burst, then lasts long
    // enough for a reader woken late by its window to have ended the burst.
    const std::vector<std::string> suffixes = {"\r", "\n\r", ""};
    std::vector<std::unique_ptr<VirtualSerialPort>> lines;
    std::vector<std::unique_ptr<Sink>> sinks;
    std::vector<std::unique_ptr<InputDevice>> sources;
    for (size_t i = 0; i < suffixes.size(); ++i) {
        lines.push_back(std::make_unique<VirtualSerialPort>("ttyUSB" + std::to_string(i)));
        sinks.push_back(std::make_unique<Sink>());
        auto f = serialPort(129 + static_cast<uint32_t>(i), suffixes[i]);
        f.comTimeout = 600;
        sources.push_back(InputDeviceComPortFactory().create(f, sinks.back()->callback()));
        ASSERT_TRUE(sources.back());
    }
    std::mt19937 rng(77);
    const char alphabet[] = {'1', 'A', '\r', '\n', '\x1D', 'x'};
    std::vector<std::string> bursts(12);
    for (auto& burst : bursts) {
        const size_t pieces = 1 + rng() % 4;
        for (size_t p = 0; p < pieces; ++p) {
            std::string piece;
            for (size_t n = 1 + rng() % 6; n > 0; --n)
                piece += alphabet[rng() % sizeof alphabet];
            for (auto& line : lines)
                line->write(piece);
            burst += piece;
            std::this_thread::sleep_for(std::chrono::milliseconds(rng() % 3));  // short pause
        }
        for (auto& line : lines)
            ASSERT_TRUE(line->waitUntilTaken());
        std::this_thread::sleep_for(1500ms);  // long pause: the burst ends
    }
    for (size_t i = 0; i < suffixes.size(); ++i) {
        std::vector<std::wstring> expected;
        for (const auto& code : expectedCodes(bursts, suffixes[i]))
            expected.push_back(b64(code));
        EXPECT_EQ(sinks[i]->waitFor(expected.size()), expected) << "suffix of " << suffixes[i].size() << " bytes";
    }
}

TEST(SerialReader, UnpluggedLineIsReopenedWithoutSpinning)
{
    VirtualSerialPort line("ttyUSB1");
    Sink sink;
    auto source = InputDeviceComPortFactory().create(serialPort(130), sink.callback());
    ASSERT_TRUE(source);
    line.write("1\r");
    ASSERT_EQ(sink.waitFor(1).size(), 1u);
    const pid_t tid = sink.readerThread();

    line.unplug();
    const double cpu = threadCpuSeconds(tid);
    const auto wallStart = std::chrono::steady_clock::now();
    std::this_thread::sleep_for(2s);
    const double cpuUsed = threadCpuSeconds(tid) - cpu;
    const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - wallStart).count();
    EXPECT_LT(cpuUsed, 0.02 * wall) << "reader thread used " << cpuUsed << " s of CPU in " << wall << " s";

    line.plug();
    // Codes written before the driver reopens the line are flushed; keep
    // offering one until it gets through.
    EXPECT_TRUE(waitUntil([&] {
        line.write("2\r");
        return sink.waitFor(2, 100ms).size() >= 2;
    }));
    const auto codes = sink.now();
    ASSERT_GE(codes.size(), 2u);
    EXPECT_EQ(codes[1], b64("2"));
}
