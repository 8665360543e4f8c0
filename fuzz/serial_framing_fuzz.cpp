// Serial framing on any byte stream with pauses anywhere, against the plain
// statement of the rules. Input: first byte picks the suffix; then 0xFF means
// "the line went quiet", any other byte is a byte on the line.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "FramingModel.h"
#include "input/SerialFramer.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 1)
        return 0;
    static const std::string suffixes[] = {"\r", "\n\r", "", "xy\r", std::string(1, '\0')};
    const std::string& suffix = suffixes[data[0] % 5];
    SerialFramer framer(suffix);
    std::vector<std::string> bursts(1), framed;
    for (size_t i = 1; i < size; ++i) {
        if (data[i] == 0xFF) {
            if (auto code = framer.quiet())
                framed.push_back(*code);
            bursts.emplace_back();
            continue;
        }
        const char byte = static_cast<char>(data[i]);
        bursts.back() += byte;
        if (auto code = framer.feed(byte))
            framed.push_back(*code);
    }
    if (auto code = framer.quiet())
        framed.push_back(*code);
    if (framed != expectedCodes(bursts, suffix))
        std::abort();
    return 0;
}
