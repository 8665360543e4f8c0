#include "addin/WcharWrapper.h"

#include <cwchar>

#include "abi/StringConversion.h"

WcharWrapper::WcharWrapper(const wchar_t* text)
{
    if (!text)
        return;
    const size_t len = std::wcslen(text) + 1;
    wide = new wchar_t[len];
    std::wmemcpy(wide, text, len);
    convToShortWchar(&narrow, text, static_cast<unsigned int>(len));
}

WcharWrapper::WcharWrapper(const unsigned short* text)
{
    if (!text)
        return;
    const unsigned int len = getStrLen(text) + 1;
    narrow = new unsigned short[len];
    for (unsigned int i = 0; i < len; ++i)
        narrow[i] = text[i];
    convFromShortWchar(&wide, text, len);
}

WcharWrapper::~WcharWrapper()
{
    delete[] narrow;
    delete[] wide;
}

unsigned int WcharWrapper::getStrLen(const unsigned short* text)
{
    return getLenShortWcharStr(text);
}
