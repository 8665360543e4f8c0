#include "util/TextUtil.h"

#include <boost/algorithm/string/case_conv.hpp>
#include <cctype>
#include <cwctype>
#include <sstream>

namespace {

template <class S>
void trimInPlace(S& text, bool (*isSpace)(typename S::value_type))
{
    size_t end = text.size();
    while (end > 0 && isSpace(text[end - 1]))
        --end;
    size_t begin = 0;
    while (begin < end && isSpace(text[begin]))
        ++begin;
    text = text.substr(begin, end - begin);
}

bool isSpaceChar(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }
bool isSpaceWide(wchar_t c) { return std::iswspace(static_cast<wint_t>(c)) != 0; }

template <class S>
S replaceAll(const S& text, const S& from, const S& to)
{
    if (text.empty() || from.empty())
        return text;
    S out;
    size_t pos = 0;
    for (size_t hit; (hit = text.find(from, pos)) != S::npos; pos = hit + from.size())
        out.append(text, pos, hit - pos).append(to);
    return out.append(text, pos, S::npos);
}

}  // namespace

void trim(std::string& text) { trimInPlace(text, isSpaceChar); }
void trim(std::wstring& text) { trimInPlace(text, isSpaceWide); }

std::string trimed(const std::string& text)
{
    std::string copy = text;
    trim(copy);
    return copy;
}

std::wstring trimed(const std::wstring& text)
{
    std::wstring copy = text;
    trim(copy);
    return copy;
}

std::string replace(const std::string& text, const std::string& from, const std::string& to)
{
    return replaceAll(text, from, to);
}

std::wstring replace(const std::wstring& text, const std::wstring& from, const std::wstring& to)
{
    return replaceAll(text, from, to);
}

std::string str_tolower(const std::string& text) { return boost::algorithm::to_lower_copy(text); }
std::wstring str_tolower(const std::wstring& text) { return boost::algorithm::to_lower_copy(text); }

std::string int_to_str(int value)
{
    std::ostringstream s;
    s << value;
    return s.str();
}

std::wstring int_to_wstr(int value)
{
    std::wostringstream s;
    s << value;
    return s.str();
}
