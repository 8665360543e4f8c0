// A scanner's report descriptor and the reports it sends, both hostile.
// Input: two bytes of descriptor length (little-endian), the descriptor, one
// byte choosing the maker (Honeywell, Newland, other), then reports of every
// size and id, each one length byte followed by that many bytes (0: the
// declared report size). A report that is not the scan report must change
// nothing: a second assembler that never sees those gives the same codes.
#include <cstdint>
#include <algorithm>
#include <cstdlib>
#include <string>

#include "input/HidPosAssembler.h"
#include "input/HidReportDescriptor.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 3)
        return 0;
    const size_t descriptorSize = std::min<size_t>(data[0] | data[1] << 8, size - 2);
    const std::string descriptor(reinterpret_cast<const char*>(data) + 2, descriptorSize);
    size_t at = 2 + descriptorSize;
    if (at >= size)
        return 0;
    static const uint16_t makers[] = {kHoneywellVendorId, kNewlandVendorId, 0x05E0};
    const auto layout = parseHidPosLayout(descriptor, makers[data[at++] % 3]);
    if (!layout)
        return 0;
    if (layout->reportSize == 0 || layout->dataOffset + layout->dataCapacity > layout->reportSize ||
        layout->continuedOffset >= layout->reportSize ||
        (layout->lengthOffset && (layout->lengthSize < 1 || layout->lengthSize > 4 ||
                                   *layout->lengthOffset + layout->lengthSize > layout->reportSize)) ||
        (layout->symbologyOffset && *layout->symbologyOffset + 3 > layout->reportSize))
        std::abort();
    HidPosAssembler assembler(*layout);
    HidPosAssembler scanReportsOnly(*layout);
    while (at < size) {
        // A length byte of 0 stands for a report of exactly the declared size.
        const size_t n = data[at++];
        const size_t take = std::min<size_t>(n ? n : layout->reportSize, size - at);
        std::string report(reinterpret_cast<const char*>(data) + at, take);
        at += take;
        if (n == 0)
            report.resize(layout->reportSize, '\0');
        const auto code = assembler.feed(report);
        if (code && (code->data.empty() || code->data.size() > kMaxCodeBytes ||
                     code->symbology.size() > 3))
            std::abort();
        const bool scanReport = report.size() == layout->reportSize &&
                                (layout->reportId == 0 || static_cast<uint8_t>(report[0]) == layout->reportId);
        if (scanReport) {
            const auto same = scanReportsOnly.feed(report);
            if (code.has_value() != same.has_value() ||
                (code && (code->data != same->data || code->symbology != same->symbology)))
                std::abort();
        } else if (code) {
            std::abort();
        }
    }
    return 0;
}
