// The parameters document, built on a controlled machine: a private /dev
// holding only the nodes a test makes, and an X server of known devices.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <set>

#include "PrivateDev.h"
#include "TestHost.h"
#include "TestUtil.h"
#include "XvfbServer.h"
#include "input/DeviceNodes.h"
#include "params/LinuxParametersTableBuilder.h"
#include "util/TextUtil.h"
#include "util/CharsetConversion.h"

namespace {

const std::string kData = RAVLIN_TEST_DATA "/params/data/";

std::string build(bool russian, bool keyboardTimeout = false)
{
    LinuxParametersTableBuilder builder(russian);
    builder.BuildProduct(keyboardTimeout);
    return wstr2str(builder.GetProduct());
}

std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Byte-for-byte, and on a mismatch the first differing offset with context.
void expectSameDocument(const std::string& actual, const std::string& expected)
{
    if (actual == expected)
        return;
    size_t at = 0;
    while (at < actual.size() && at < expected.size() && actual[at] == expected[at])
        ++at;
    const size_t from = at < 60 ? 0 : at - 60;
    ADD_FAILURE() << "documents differ at byte " << at << " (lengths " << actual.size() << " and "
                  << expected.size() << ")\n  got:      ..." << actual.substr(from, 140)
                  << "\n  expected: ..." << expected.substr(from, 140);
}

bool parsesAsXml(const std::string& document)
{
    return runWithInput("xmllint --noout - >/dev/null 2>&1 && echo ok", document) == "ok\n";
}

void makeNode(const std::string& relative)
{
    const std::string path = "/dev/" + relative;
    const size_t slash = path.rfind('/');
    mkdir(path.substr(0, slash).c_str(), 0755);
    std::ofstream(path.c_str()).put('\0');
}

void removeNodes(const std::vector<std::string>& relatives)
{
    for (const auto& r : relatives)
        unlink(("/dev/" + r).c_str());
    rmdir("/dev/sub");
}

class ControlledMachine : public ::testing::Test {
protected:
    void TearDown() override { removeNodes(made); }
    void make(std::vector<std::string> nodes)
    {
        for (const auto& n : nodes)
            makeNode(n);
        made.insert(made.end(), nodes.begin(), nodes.end());
    }
    std::vector<std::string> made;
};

const std::vector<std::string> kGoldenNodes = {"ttyS0", "ttyS1", "ttyS2", "ttyS3", "ttyS10",
                                               "ttyACM1", "ttyUSB0", "sub/ttyS2"};

const std::pair<const char*, const char*> kCaptions[] = {
    {"Параметры подключения", "Connection parameters"},
    {"Параметры устройства", "Device parameters"},
    {"\"Параметры\"", "\"Parameters\""},
    {"\"Порт\"", "\"Port\""},
    {">Клавиатура<", ">Keyboard<"},
    {"HID устройство", "HID device"},
    {"\"Скорость\"", "\"Speed\""},
    {"\"Суффикс\"", "\"Suffix\""},
    {"Таймаут COM-порта (мс)", "COM-port Timeout (ms)"},
    {"Кодировка символов из COM-порта", "Encoding for symbols from COM port"},
    {"Кодировка COM-порта", "COM port encoding"},
    {"Символ GS", "Symbol GS"},
    {"Для сканеров в клавиатурном режиме. Данная настройка должна соответствовать клавише, нажатие которой "
     "эмулирует сканер при появлении в считанном штрихкода символа GS(29, 0x1D).",
     "For scanners in keyboard mode. This settings must match key, which scanner sends for symbol GS(29. 0x1D)"},
    {"Тип выходных данных", "Output data type"},
    {">Строка<", ">String<"},
};

std::string replaceAll(std::string text, const std::string& from, const std::string& to)
{
    for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
    return text;
}

}  // namespace

TEST_F(ControlledMachine, GoldenDocumentsInBothLanguages)
{
    make(kGoldenNodes);
    XvfbServer server;
    for (const bool russian : {true, false}) {
        const std::string document = build(russian);
        const std::string golden = kData + (russian ? "parameters-ru.xml" : "parameters-en.xml");
        if (std::getenv("RAVLIN_WRITE_GOLDEN"))
            std::ofstream(golden, std::ios::binary) << document;
        expectSameDocument(document, readFile(golden));
        EXPECT_TRUE(parsesAsXml(document));
        EXPECT_TRUE(parsesAsXml(readFile(golden)));
    }
}

TEST_F(ControlledMachine, LanguagesDifferOnlyInCaptions)
{
    make(kGoldenNodes);
    std::string russian = build(true);
    for (const auto& [ru, en] : kCaptions)
        russian = replaceAll(russian, ru, en);
    EXPECT_EQ(russian, build(false));
}

TEST_F(ControlledMachine, KeyboardTimeoutFlagChangesNothing)
{
    EXPECT_EQ(build(true, true), build(true, false));
    EXPECT_EQ(build(false, true), build(false, false));
}

TEST_F(ControlledMachine, NoPortsNoKeyboardsStillCompleteDocument)
{
    DisplayOverride none("");
    const std::string empty = build(false);
    EXPECT_NE(empty.find("<Parameter Name=\"Port\" Caption=\"Port\" TypeValue=\"Number\" DefaultValue=\"0\">"
                         "<ChoiceList><Item Value=\"0\">Keyboard</Item></ChoiceList></Parameter>"),
              std::string::npos);
    EXPECT_NE(empty.find("MasterParameterValue=\"0\"><ChoiceList></ChoiceList></Parameter>"), std::string::npos);
    EXPECT_TRUE(parsesAsXml(empty));

    // The rest is the golden document, lists aside.
    std::string golden = readFile(kData + "parameters-en.xml");
    const auto cut = [](std::string doc, const std::string& from, const std::string& to) {
        const size_t a = doc.find(from) + from.size();
        return doc.erase(a, doc.find(to, a) - a);
    };
    golden = cut(golden, "<Item Value=\"0\">Keyboard</Item>", "</ChoiceList>");
    golden = cut(golden, "MasterParameterValue=\"0\"><ChoiceList>", "</ChoiceList>");
    EXPECT_EQ(empty, golden);
}

TEST_F(ControlledMachine, SerialPortListCases)
{
    const auto portList = [] {
        const std::string doc = build(false);
        const size_t a = doc.find("<Item Value=\"0\">Keyboard</Item>") + 31;
        return doc.substr(a, doc.find("</ChoiceList>", a) - a);
    };
    make({"ttyS0", "ttyS1", "ttyS2", "ttyS3"});
    EXPECT_EQ(portList(), "<Item Value=\"1\">COM1</Item><Item Value=\"2\">COM2</Item>"
                          "<Item Value=\"3\">COM3</Item><Item Value=\"4\">COM4</Item>");
    removeNodes(made);
    make({"ttyUSB0"});
    EXPECT_EQ(portList(), "<Item Value=\"129\">USB COM1</Item>");
    removeNodes(made);
    make({"ttyACM1"});
    EXPECT_EQ(portList(), "<Item Value=\"66\">Virtual COM2</Item>");
    removeNodes(made);
    make({"ttyS10", "ttyS9"});
    EXPECT_EQ(portList(), "<Item Value=\"10\">COM10</Item><Item Value=\"11\">COM11</Item>");
    removeNodes(made);
    // A nested node cannot be numbered by its /dev path: it counts as 0.
    make({"sub/ttyS7"});
    EXPECT_EQ(portList(), "<Item Value=\"1\">COM1</Item>");
}

TEST_F(ControlledMachine, WalkMatchesFind)
{
    make(kGoldenNodes);
    symlink("/dev/null", "/dev/ttyUSB5");
    made.push_back("ttyUSB5");
    for (const std::string& root : {std::string("/dev/"), std::string("/proc/1/root/dev/")}) {
        for (const char* prefix : {"ttyS", "ttyACM", "ttyUSB"}) {
            std::vector<std::string> walked = findDeviceNodes(prefix, root);
            std::sort(walked.begin(), walked.end());
            std::vector<std::string> found;
            std::istringstream lines(runCommand("find " + root + " -name \"" + prefix + "*\" 2>/dev/null"));
            for (std::string line; std::getline(lines, line);)
                found.push_back(line);
            std::sort(found.begin(), found.end());
            EXPECT_EQ(walked, found) << root << prefix;
        }
    }
}

TEST(KeyboardList, NamesAreBlankedOfMarkupAndNonAscii)
{
    EXPECT_EQ(LinuxParametersTableBuilder::keyboardItems({"O'Brien & Co <HID>", "Сканер 1"}),
              L"<Item Value=\"O Brien   Co  HID \">O Brien   Co  HID </Item>"
              L"<Item Value=\"             1\">             1</Item>");
    EXPECT_EQ(LinuxParametersTableBuilder::keyboardItems({}), L"");
}

TEST(KeyboardList, XvfbKeyboardOnlyAndNothingWithoutServer)
{
    {
        XvfbServer server;
        EXPECT_EQ(listKeyboardDeviceNames(), std::vector<std::string>{"Xvfb keyboard"});
    }
    DisplayOverride nowhere(":4072");
    EXPECT_TRUE(listKeyboardDeviceNames().empty());
}

TEST(ParametersBuilder, FixedPieces)
{
    ParametersTableBuilder builder(false);
    const std::wstring symbols = builder.GetSymbolChoiceList();
    EXPECT_EQ(symbols.rfind(L"<ChoiceList><Item Value=\"-1\">&lt;NONE&gt;</Item><Item Value=\"0\">0 (NUL)</Item>", 0), 0u);
    EXPECT_NE(symbols.find(L"<Item Value=\"126\">126 (&#x7e;)</Item><Item Value=\"127\">127 (DEL)</Item></ChoiceList>"),
              std::wstring::npos);
    EXPECT_NE(symbols.find(L"<Item Value=\"60\">60 (&#x3c;)</Item>"), std::wstring::npos);
    EXPECT_NE(symbols.find(L"<Item Value=\"32\">32 (SPACE)</Item>"), std::wstring::npos);
    size_t items = 0;
    for (size_t at = 0; (at = symbols.find(L"<Item ", at)) != std::wstring::npos; ++at)
        ++items;
    EXPECT_EQ(items, 129u);

    builder.BuildProduct(false);
    const std::string once = wstr2str(builder.GetProduct());
    EXPECT_NE(once.find("<ChoiceList><Item Value=\"-1\">&lt;NONE&gt;</Item><Item Value=\"0\">F1</Item>"), std::string::npos);
    EXPECT_NE(once.find("<Item Value=\"20\">NUMPAD_ENTER</Item></ChoiceList>"), std::string::npos);
    // TimeoutCOM is the one self-closing parameter, and COMEncoding follows it directly.
    EXPECT_NE(once.find("MasterParameterValue=\"0\" /><Parameter Name=\"COMEncoding\""), std::string::npos);
    size_t selfClosing = 0;
    for (size_t at = 0; (at = once.find(" />", at)) != std::string::npos; ++at)
        ++selfClosing;
    EXPECT_EQ(selfClosing, 1u);
    // The base builder has no machine lists at all.
    EXPECT_EQ(once.find("<Parameter Name=\"Port\""), std::string::npos);

    builder.BuildProduct(false);
    EXPECT_EQ(wstr2str(builder.GetProduct()), once + once);
}

TEST_F(ControlledMachine, ThroughTheHost)
{
    make(kGoldenNodes);
    XvfbServer server;
    TestHost host;
    Component c = host.create(L"InputDevice");
    const CallResult r = c.call(L"GetParameters");
    EXPECT_TRUE(r.returned);
    EXPECT_EQ(r.result.type, VTYPE_BOOL);
    EXPECT_TRUE(r.result.boolean);
    EXPECT_EQ(r.params[0].type, VTYPE_PWSTR);
    expectSameDocument(wstr2str(r.params[0].text), readFile(kData + "parameters-ru.xml"));
    IComponentBase* o = c.object();
    host.destroy(o);
    EXPECT_EQ(host.memory.liveBlocks(), 0u);
}
