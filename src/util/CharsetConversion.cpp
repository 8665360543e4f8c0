#include "util/CharsetConversion.h"

#include <iconv.h>

#include <algorithm>
#include <boost/locale/encoding_utf.hpp>
#include <cstring>
#include <vector>

namespace {

std::wstring iconvToWide(const char* codeSet, const char* bytes, size_t length)
{
    // ASCII reads the same in every code set offered here, and opening iconv
    // costs more than the rest of a scan's path: widen it directly.
    size_t ascii = 0;
    while (ascii < length && !NotASCII(bytes[ascii]))
        ++ascii;
    if (ascii == length)
        return std::wstring(bytes, std::find(bytes, bytes + length, '\0'));

    std::vector<char> in(bytes, bytes + length);
    std::vector<wchar_t> out(length + 1, L'\0');
    iconv_t cd = iconv_open("WCHAR_T", codeSet);
    if (cd == reinterpret_cast<iconv_t>(-1))
        return std::wstring();
    char* inPtr = in.data();
    size_t inLeft = in.size();
    char* outPtr = reinterpret_cast<char*>(out.data());
    size_t outLeft = length * sizeof(wchar_t);
    const size_t rc = iconv(cd, &inPtr, &inLeft, &outPtr, &outLeft);
    iconv_close(cd);
    if (rc == static_cast<size_t>(-1))
        return std::wstring();
    // An embedded NUL ends the text, as it would for any C consumer.
    return std::wstring(out.data());
}

}  // namespace

std::wstring ConvertMbsToWcs(std::string text, std::wstring encoding)
{
    const char* codeSet = encoding == L"Windows-1251" ? "CP1251" : "UTF-8";
    return iconvToWide(codeSet, text.data(), text.size());
}

std::wstring ConvertUTF8Input(const char* text)
{
    if (!text)
        return std::wstring();
    return iconvToWide(IsUTF8String(text) ? "UTF-8" : "CP1251", text, std::strlen(text));
}

bool IsUTF8String(const char* text)
{
    if (!text || !*text)
        return false;
    unsigned foreign = 0;
    unsigned continuation = 0;
    for (const char* p = text + 1; *p; ++p) {
        const auto b = static_cast<unsigned char>(*p);
        if (b < 0xC0 || b == 0xC2) {
            if (b >= 0x80)
                ++continuation;
        } else if (b != 0xC3 && b != 0xD0 && b != 0xD1 && b != 0xE2) {
            ++foreign;
        }
    }
    return foreign < continuation;
}

bool NotASCII(char c)
{
    return (static_cast<unsigned char>(c) & 0x80) != 0;
}

std::string singleByteToUtf8(char byte, const char* codeSet)
{
    return wstr2str(iconvToWide(codeSet, &byte, 1));
}

std::string wstr2str(const std::wstring& text)
{
    return boost::locale::conv::utf_to_utf<char>(text, boost::locale::conv::skip);
}


std::wstring str2wstr(const std::string& text)
{
    return boost::locale::conv::utf_to_utf<wchar_t>(text, boost::locale::conv::skip);
}

