#include "util/SymbolCodecs.h"

#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cwchar>
#include <cwctype>

#include "util/CharsetConversion.h"

namespace {

const wchar_t* const kControlNames[33] = {
    L"NUL", L"SOH", L"STX", L"ETX", L"EOT", L"ENQ", L"ACK", L"BEL", L"BS",  L"TAB", L"LF",
    L"VT",  L"FF",  L"CR",  L"SO",  L"SI",  L"DLE", L"DC1", L"DC2", L"DC3", L"DC4", L"NAK",
    L"SYN", L"ETB", L"CAN", L"EM",  L"SUB", L"ESC", L"FS",  L"GS",  L"RS",  L"US",  L"SPACE"};

const std::string kBase64Alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

bool isGraphicByte(unsigned char b) { return b >= 0x21 && b <= 0x7E; }

int base64Value(unsigned char c)
{
    if (c >= 'A' && c <= 'Z') return c - 'A';
    if (c >= 'a' && c <= 'z') return c - 'a' + 26;
    if (c >= '0' && c <= '9') return c - '0' + 52;
    if (c == '+') return 62;
    if (c == '/') return 63;
    return -1;
}

}  // namespace

std::wstring GetSymbolName(wchar_t symbol)
{
    // wchar_t is signed on x86-64 and unsigned on aarch64; compared unsigned,
    // a negative value falls past the table on both.
    if (static_cast<std::uint32_t>(symbol) <= 32)
        return kControlNames[symbol];
    if (symbol == 127)
        return L"DEL";
    return std::wstring();
}

std::wstring FormatSymbolForDisplay(wchar_t symbol)
{
    const std::wstring name = GetSymbolName(symbol);
    if (!name.empty())
        return L" '" + name + L"' ";
    return std::wstring(1, symbol);
}

std::wstring FormatSymbolAsNumber(wchar_t symbol)
{
    return std::to_wstring(static_cast<uint32_t>(symbol));
}

bool TrimXMLIllegalChars(std::string& text)
{
    for (char& c : text)
        if (c == '&' || c == '<' || c == '>' || c == '"' || c == '\'' || NotASCII(c) ||
            static_cast<unsigned char>(c) < 0x20 || c == '\x7F')
            c = ' ';
    return true;
}

std::string raw2HRS(const char* data, int length)
{
    std::string out;
    if (!data || length <= 0)
        return out;
    bool inGroup = false;
    for (int i = 0; i < length; ++i) {
        const auto b = static_cast<unsigned char>(data[i]);
        if (isGraphicByte(b)) {
            if (inGroup) {
                out += ')';
                inGroup = false;
                // The format drops a graphic byte that closes a group at the very end.
                if (i == length - 1)
                    break;
            }
            out += static_cast<char>(b);
        } else {
            if (!inGroup) {
                out += '(';
                inGroup = true;
            }
            char digits[4];
            std::snprintf(digits, sizeof digits, "%03u", static_cast<unsigned>(b));
            out += digits;
        }
    }
    if (inGroup)
        out += ')';
    return out;
}

std::string raw2HRS(const std::string& data)
{
    return raw2HRS(data.data(), static_cast<int>(data.size()));
}

std::wstring raw2HRS(const std::wstring& text)
{
    return str2wstr(raw2HRS(wstr2str(text)));
}

std::wstring raw2HRS(const wchar_t* text, int length)
{
    if (!text || length <= 0)
        return std::wstring();
    return raw2HRS(std::wstring(text, static_cast<size_t>(length)));
}

std::wstring hrs2Raw(const std::wstring& hrs)
{
    std::wstring out;
    std::wstring digits;
    bool inGroup = false;
    for (wchar_t c : hrs) {
        if (c == L'(') {
            if (inGroup)
                return std::wstring();
            inGroup = true;
        } else if (c == L')') {
            // A completed triple has already emptied the buffer, so every closed
            // group fails here; only a group left open at the end decodes.
            if (!inGroup || digits.size() <= 2)
                return std::wstring();
            inGroup = false;
        } else if (!inGroup) {
            out += c;
        } else {
            if (!std::iswdigit(static_cast<wint_t>(c)))
                return std::wstring();
            digits += c;
            if (digits.size() == 3) {
                const long value = std::wcstol(digits.c_str(), nullptr, 10);
                out += static_cast<wchar_t>(std::btowc(static_cast<int>(value)));
                digits.clear();
            }
        }
    }
    return out;
}

int hrs2Raw(wchar_t* out, const std::wstring& hrs, int capacity)
{
    if (!out || hrs.empty() || capacity < 1)
        return 0;
    const std::wstring decoded = hrs2Raw(hrs);
    int n = 0;
    for (; n < capacity && static_cast<size_t>(n) < decoded.size(); ++n)
        out[n] = decoded[static_cast<size_t>(n)];
    return n;
}

std::wstring raw2Printable(const wchar_t* text, int length)
{
    std::wstring out;
    if (!text || length < 1)
        return out;
    for (int i = 0; i < length; ++i) {
        const int b = std::wctob(static_cast<wint_t>(text[i]));
        if (b != EOF && std::isgraph(static_cast<unsigned char>(b)))
            out += text[i];
    }
    return out;
}

std::wstring raw2Printable(std::wstring& text)
{
    return raw2Printable(text.data(), static_cast<int>(text.size()));
}

std::string base64_encode(const std::string& bytes)
{
    std::string out;
    out.reserve((bytes.size() + 2) / 3 * 4);
    size_t i = 0;
    for (; i + 3 <= bytes.size(); i += 3) {
        const uint32_t n = static_cast<unsigned char>(bytes[i]) << 16 |
                           static_cast<unsigned char>(bytes[i + 1]) << 8 |
                           static_cast<unsigned char>(bytes[i + 2]);
        out += kBase64Alphabet[n >> 18 & 63];
        out += kBase64Alphabet[n >> 12 & 63];
        out += kBase64Alphabet[n >> 6 & 63];
        out += kBase64Alphabet[n & 63];
    }
    const size_t rest = bytes.size() - i;
    if (rest > 0) {
        uint32_t n = static_cast<unsigned char>(bytes[i]) << 16;
        if (rest == 2)
            n |= static_cast<unsigned char>(bytes[i + 1]) << 8;
        out += kBase64Alphabet[n >> 18 & 63];
        out += kBase64Alphabet[n >> 12 & 63];
        out += rest == 2 ? kBase64Alphabet[n >> 6 & 63] : '=';
        out += '=';
    }
    return out;
}

std::string base64_decode(const std::string& text)
{
    std::string out;
    uint32_t group = 0;
    int count = 0;
    for (char c : text) {
        const int v = base64Value(static_cast<unsigned char>(c));
        if (v < 0)
            break;  // '=' or anything outside the alphabet ends the data
        group = group << 6 | static_cast<uint32_t>(v);
        if (++count == 4) {
            out += static_cast<char>(group >> 16 & 0xFF);
            out += static_cast<char>(group >> 8 & 0xFF);
            out += static_cast<char>(group & 0xFF);
            group = 0;
            count = 0;
        }
    }
    if (count == 2) {
        out += static_cast<char>(group >> 4 & 0xFF);
    } else if (count == 3) {
        out += static_cast<char>(group >> 10 & 0xFF);
        out += static_cast<char>(group >> 2 & 0xFF);
    }
    return out;
}

std::string raw2Base64(const std::string& bytes) { return base64_encode(bytes); }
std::string base642Raw(const std::string& text) { return base64_decode(text); }

std::wstring raw2Base64(const std::wstring& text)
{
    return str2wstr(base64_encode(wstr2str(text)));
}

std::wstring base642Raw(const std::wstring& text)
{
    return str2wstr(base64_decode(wstr2str(text)));
}

std::wstring decodeForOutput(const std::wstring& base64, OutputDataType outputDataType)
{
    if (outputDataType == OutputDataType::Base64)
        return base64;
    if (outputDataType == OutputDataType::HumanReadable)
        return raw2HRS(base642Raw(base64));
    return base642Raw(base64);
}
