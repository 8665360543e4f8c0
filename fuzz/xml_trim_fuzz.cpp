// The XML blanking filter leaves nothing that could break the document.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "util/SymbolCodecs.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::string text(reinterpret_cast<const char*>(data), size);
    if (!TrimXMLIllegalChars(text) || text.size() != size)
        std::abort();
    for (unsigned char c : text)
        if (c == '&' || c == '<' || c == '>' || c == '"' || c == '\'' || c >= 0x80 || c < 0x20 || c == 0x7F)
            std::abort();
    return 0;
}
