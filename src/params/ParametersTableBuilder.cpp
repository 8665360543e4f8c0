#include "params/ParametersTableBuilder.h"

#include <sstream>

#include "input/NonPrintableKeys.h"
#include "util/TextUtil.h"
#include "util/Logger.h"
#include "util/SymbolCodecs.h"

namespace {

const std::wstring kUtf8 = L"UTF-8";
const std::wstring kWindows1251 = L"Windows-1251";

// Serial-only parameters are shown while Port is not the keyboard (0).
const std::wstring kSerialOnly = ParametersTableBuilder::attribute(L"MasterParameterOperation", L"NotEqual") +
                                 ParametersTableBuilder::attribute(L"MasterParameterName", L"Port") +
                                 ParametersTableBuilder::attribute(L"MasterParameterValue", L"0");

}  // namespace

ParametersTableBuilder::ParametersTableBuilder(bool russian) : russian(russian) {}
ParametersTableBuilder::~ParametersTableBuilder() = default;

std::wstring ParametersTableBuilder::attribute(const std::wstring& name, const std::wstring& value)
{
    return L" " + name + L"=\"" + value + L"\"";
}

std::wstring ParametersTableBuilder::item(const std::wstring& value, const std::wstring& text)
{
    return L"<Item" + attribute(L"Value", value) + L">" + text + L"</Item>";
}

const wchar_t* ParametersTableBuilder::text(const wchar_t* russianText, const wchar_t* englishText) const
{
    return russian ? russianText : englishText;
}

void ParametersTableBuilder::BuildHeaderPart()
{
    append(L"<?xml" + attribute(L"version", L"1.0") + attribute(L"encoding", L"UTF-8") + L" ?>" +
           L"<Settings>" + L"<Page" + attribute(L"Caption", text(L"Параметры", L"Parameters")) + L">" +
           L"<Group" + attribute(L"Caption", text(L"Параметры подключения", L"Connection parameters")) + L">");
}

void ParametersTableBuilder::BuildPortPart() {}
void ParametersTableBuilder::BuildKeyboardDevicePart() {}
void ParametersTableBuilder::BuildBitsPart() {}
void ParametersTableBuilder::BuildCOMPortSpeedPart() {}

void ParametersTableBuilder::BuildGroupDividerPart()
{
    append(L"</Group><Group" + attribute(L"Caption", text(L"Параметры устройства", L"Device parameters")) + L">");
}

void ParametersTableBuilder::BuildPrefixPart() {}

void ParametersTableBuilder::BuildSuffixPart()
{
    append(L"<Parameter" + attribute(L"Name", L"Suffix") + attribute(L"Caption", text(L"Суффикс", L"Suffix")) +
           attribute(L"TypeValue", L"Number") + attribute(L"DefaultValue", L"13") + L">" +
           GetSymbolChoiceList() + L"</Parameter>");
}

void ParametersTableBuilder::BuildKeyboardTimeoutPart(bool) {}

void ParametersTableBuilder::BuildCOMPortTimeoutAndEncodingPart()
{
    append(L"<Parameter" + attribute(L"Name", L"TimeoutCOM") +
           attribute(L"Caption", text(L"Таймаут COM-порта (мс)", L"COM-port Timeout (ms)")) +
           attribute(L"TypeValue", L"Number") + attribute(L"DefaultValue", L"5") + kSerialOnly + L" />" +
           L"<Parameter" + attribute(L"Name", L"COMEncoding") +
           attribute(L"Caption", text(L"Кодировка COM-порта", L"COM port encoding")) +
           attribute(L"Description", text(L"Кодировка символов из COM-порта", L"Encoding for symbols from COM port")) +
           attribute(L"TypeValue", L"String") + attribute(L"DefaultValue", kUtf8) + kSerialOnly + L">" +
           L"<ChoiceList>" + item(kUtf8, kUtf8) + item(kWindows1251, kWindows1251) + L"</ChoiceList></Parameter>");
}

void ParametersTableBuilder::BuildGSSymbolPart()
{
    std::wstring choices = L"<ChoiceList>";
    for (int key = -1; key <= 20; ++key)
        choices += item(int_to_wstr(key), NonPrintableKeys::getKeyFullName(static_cast<NonPrintableKeys::KeyID>(key)));
    choices += L"</ChoiceList>";
    append(L"<Parameter" + attribute(L"Name", L"GSSymbolKey") + attribute(L"Caption", text(L"Символ GS", L"Symbol GS")) +
           attribute(L"Description",
                     text(L"Для сканеров в клавиатурном режиме. Данная настройка должна соответствовать клавише, "
                          L"нажатие которой эмулирует сканер при появлении в считанном штрихкода символа GS(29, 0x1D).",
                          L"For scanners in keyboard mode. This settings must match key, which scanner sends for "
                          L"symbol GS(29. 0x1D)")) +
           attribute(L"TypeValue", L"Number") + attribute(L"DefaultValue", L"-1") +
           attribute(L"MasterParameterOperation", L"Equal") + attribute(L"MasterParameterName", L"Port") +
           attribute(L"MasterParameterValue", L"0") + L">" + choices + L"</Parameter>");
}

void ParametersTableBuilder::BuildOutputDataTypePart()
{
    append(L"<Parameter" + attribute(L"Name", L"OutputDataType") +
           attribute(L"Caption", text(L"Тип выходных данных", L"Output data type")) +
           attribute(L"TypeValue", L"Number") + attribute(L"DefaultValue", L"0") + L"><ChoiceList>" +
           item(L"0", text(L"Строка", L"String")) + item(L"2", L"Base64") + L"</ChoiceList></Parameter>");
}

void ParametersTableBuilder::BuildDeviceParametersGroupEndPart() { append(L"</Group></Page>"); }
void ParametersTableBuilder::BuildLogParametersPart() {}
void ParametersTableBuilder::BuildEndPart() { append(L"</Settings>"); }

void ParametersTableBuilder::BuildProduct(bool keyboardTimeout)
{
    BuildHeaderPart();
    BuildPortPart();
    BuildKeyboardDevicePart();
    BuildBitsPart();
    BuildCOMPortSpeedPart();
    BuildGroupDividerPart();
    BuildPrefixPart();
    BuildSuffixPart();
    BuildKeyboardTimeoutPart(keyboardTimeout);
    BuildCOMPortTimeoutAndEncodingPart();
    BuildGSSymbolPart();
    BuildOutputDataTypePart();
    BuildDeviceParametersGroupEndPart();
    BuildLogParametersPart();
    BuildEndPart();
}

std::wstring ParametersTableBuilder::GetProduct() const { return product; }

// Printable codes are written as character references, which keeps "<", "&"
// and the quotes out of the document without any escaping.
std::wstring ParametersTableBuilder::GetSymbolChoiceList() const
{
    std::wstring list = L"<ChoiceList>" + item(L"-1", L"&lt;NONE&gt;");
    for (wchar_t code = 0; code <= 127; ++code) {
        std::wstring name = GetSymbolName(code);
        if (name.empty()) {
            std::wostringstream hex;
            hex << std::hex << static_cast<unsigned>(code);
            name = L"&#x" + hex.str() + L";";
        }
        list += item(FormatSymbolAsNumber(code), FormatSymbolAsNumber(code) + L" (" + name + L")");
    }
    return list + L"</ChoiceList>";
}
