// Base64: any text decodes without harm; any bytes survive a round trip.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "util/SymbolCodecs.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string input(reinterpret_cast<const char*>(data), size);
    base64_decode(input);
    base642Raw(std::wstring(input.begin(), input.end()));
    if (base64_decode(base64_encode(input)) != input)
        std::abort();
    return 0;
}
