// The 16-bit string conversions at the host interface.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "abi/StringConversion.h"
#include "addin/WcharWrapper.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::vector<unsigned short> units(size / 2 + 1, 0);  // the host always terminates its strings
    std::memcpy(units.data(), data, size / 2 * 2);
    const std::wstring wide = convFromShortWchar(units.data(), getLenShortWcharStr(units.data()));
    unsigned short* back = nullptr;
    convToShortWchar(&back, wide.c_str());
    if (getLenShortWcharStr(back) != wide.size())
        std::abort();
    delete[] back;
    WcharWrapper fromShort(units.data());
    WcharWrapper fromWide(wide.c_str());
    tVariant v{};
    v.vt = VTYPE_PWSTR;
    v.pwstrVal = units.data();
    v.wstrLen = size ? data[0] * 1000u : 0;  // lengths that lie
    convFromShortWchar(v);
    int i = 0;
    unsigned long l = 0;
    if (size >= 10) {
        std::memcpy(&v, data, 8);
        v.vt = data[8];
        convVarToInt(v, i);
        convVarToDWORD(v, l);
    }
    return 0;
}
