#include "abi/StringConversion.h"

#include <cmath>
#include <cstring>

unsigned int getLenShortWcharStr(const unsigned short* s)
{
    unsigned int n = 0;
    if (s)
        while (s[n])
            ++n;
    return n;
}

unsigned int convToShortWchar(unsigned short** dest, const wchar_t* src, unsigned int len)
{
    if (!src)
        src = L"";
    if (len == 0)
        len = static_cast<unsigned int>(std::wcslen(src)) + 1;
    if (!*dest)
        *dest = new unsigned short[len];
    std::memset(*dest, 0, len * sizeof(unsigned short));
    // The rest of the buffer stays zero: nothing past the terminator is read.
    for (unsigned int i = 0; i < len && (i == 0 || src[i - 1]); ++i)
        (*dest)[i] = static_cast<unsigned short>(static_cast<uint32_t>(src[i]) & 0xFFFFu);
    return len;
}

unsigned int convFromShortWchar(wchar_t** dest, const unsigned short* src, unsigned int len)
{
    static const unsigned short empty = 0;
    if (!src)
        src = &empty;
    if (len == 0)
        len = getLenShortWcharStr(src) + 1;
    if (!*dest)
        *dest = new wchar_t[len];
    std::memset(*dest, 0, len * sizeof(wchar_t));
    for (unsigned int i = 0; i < len && (i == 0 || src[i - 1]); ++i)
        (*dest)[i] = static_cast<wchar_t>(src[i]);
    return len;
}

std::wstring convFromShortWchar(const unsigned short* src, unsigned int len)
{
    if (!src)
        return std::wstring();
    std::wstring out(len, L'\0');
    for (unsigned int i = 0; i < len; ++i)
        out[i] = static_cast<wchar_t>(src[i]);
    return out;
}

std::wstring convFromShortWchar(const tVariant& value)
{
    // Host strings are zero-terminated; stopping there keeps a wrong length
    // from reading past the host's block.
    unsigned int n = 0;
    if (value.pwstrVal)
        while (n < value.wstrLen && value.pwstrVal[n])
            ++n;
    return convFromShortWchar(value.pwstrVal, n);
}

namespace {

// A double outside the target range has no defined truncation; refuse it
// rather than hand the host's garbage to the settings.
bool truncateDouble(double d, double low, double high, long double& out)
{
    if (!std::isfinite(d) || d < low || d >= high)
        return false;
    out = std::trunc(static_cast<long double>(d));
    return true;
}

}  // namespace

bool convVarToInt(const tVariant& value, int& out)
{
    switch (value.vt) {
    case VTYPE_I2:
    case VTYPE_I4:
    case VTYPE_ERROR:
    case VTYPE_I1:
        out = value.lVal;
        return true;
    case VTYPE_R4:
    case VTYPE_R8: {
        long double t;
        if (!truncateDouble(value.dblVal, -2147483649.0, 2147483648.0, t) || t < -2147483648.0L)
            return false;
        out = static_cast<int>(t);
        return true;
    }
    default:
        return false;
    }
}

bool convVarToDWORD(const tVariant& value, unsigned long& out)
{
    switch (value.vt) {
    case VTYPE_I2:
    case VTYPE_I4:
    case VTYPE_ERROR:
    case VTYPE_I1:
    case VTYPE_UI1:
        out = static_cast<unsigned long>(static_cast<long>(value.lVal));
        return true;
    case VTYPE_R4:
    case VTYPE_R8: {
        long double t;
        if (!truncateDouble(value.dblVal, -9223372036854775808.0, 18446744073709551616.0, t))
            return false;
        out = t < 0 ? static_cast<unsigned long>(static_cast<long>(t))
                    : static_cast<unsigned long>(t);
        return true;
    }
    case VTYPE_UI4:
        out = static_cast<uint32_t>(value.lVal);
        return true;
    case VTYPE_I8:
    case VTYPE_UI8:
        out = static_cast<unsigned long>(value.ullVal);
        return true;
    default:
        return false;
    }
}

unsigned short* AllocAndConvert(IMemoryManager* memory, const wchar_t* text, unsigned int* length)
{
    if (!memory || !text)
        return nullptr;
    const size_t chars = std::wcslen(text);
    void* block = nullptr;
    if (!memory->AllocMemory(&block, static_cast<unsigned long>((chars + 1) * sizeof(unsigned short))) ||
        !block)
        return nullptr;
    auto* out = static_cast<unsigned short*>(block);
    convToShortWchar(&out, text, static_cast<unsigned int>(chars + 1));
    if (length)
        *length = static_cast<unsigned int>(chars);
    return out;
}

tVariant AllocAndConvertVariant(IMemoryManager* memory, const wchar_t* text)
{
    tVariant v{};
    v.vt = VTYPE_PWSTR;
    unsigned int length = 0;
    v.pwstrVal = AllocAndConvert(memory, text, &length);
    v.wstrLen = v.pwstrVal ? length : 0;
    return v;
}

tVariant makeBoolVariant(bool value)
{
    tVariant v{};
    v.vt = VTYPE_BOOL;
    v.bVal = value;
    return v;
}

bool boolOf(const tVariant& value)
{
    // The host writes one byte; any non-zero byte is true.
    return (value.lVal & 0xFF) != 0;
}

tVariant makeIntVariant(int32_t value)
{
    tVariant v{};
    v.vt = VTYPE_I4;
    v.lVal = value;
    return v;
}
