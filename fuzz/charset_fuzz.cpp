// Character-set conversion of any bytes, in every code set the driver names.
#include <cstdint>
#include <string>

#include "util/CharsetConversion.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string input(reinterpret_cast<const char*>(data), size);
    IsUTF8String(input.c_str());
    ConvertUTF8Input(input.c_str());
    for (const wchar_t* encoding : {L"UTF-8", L"Windows-1251", L"KOI8-R", L""})
        ConvertMbsToWcs(input, encoding);
    const std::wstring wide = str2wstr(input);
    wstr2str(wide);
    std::wstring raw;
    for (size_t i = 0; i + 4 <= size; i += 4)
        raw += static_cast<wchar_t>(data[i] | data[i + 1] << 8 | data[i + 2] << 16 | data[i + 3] << 24);
    wstr2str(raw);
    return 0;
}
