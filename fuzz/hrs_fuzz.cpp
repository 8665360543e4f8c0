// The human-readable rendering and its parser, on any input.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "util/SymbolCodecs.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string input(reinterpret_cast<const char*>(data), size);
    const std::string hrs = raw2HRS(input);
    // Every byte is shown, except a graphic last byte right after a group.
    if (hrs.size() + 1 < input.size())
        std::abort();
    std::wstring wide;
    for (unsigned char c : input)
        wide += static_cast<wchar_t>(c);
    raw2HRS(wide);
    hrs2Raw(wide);
    wchar_t buffer[16];
    if (hrs2Raw(buffer, wide, 16) > 16)
        std::abort();
    raw2Printable(wide);
    return 0;
}
