#include "input/HidPosAssembler.h"

#include "util/SupportLog.h"

HidPosAssembler::HidPosAssembler(const HidPosLayout& layout) : layout(layout) {}

void HidPosAssembler::reset()
{
    pending = ScannedCode{};
    pending.data.shrink_to_fit();
    started = false;
    dropping = false;
}

bool HidPosAssembler::isScanReport(const std::string& report) const
{
    // Each read of a hidraw node is one whole report, so a report of another
    // size is another report (a status report, say), never a fragment of ours.
    return report.size() == layout.reportSize &&
           (layout.reportId == 0 || static_cast<uint8_t>(report[0]) == layout.reportId);
}

std::optional<ScannedCode> HidPosAssembler::feed(const std::string& report)
{
    if (!isScanReport(report))
        return std::nullopt;  // not ours: a chain in progress goes on
    auto byte = [&](size_t at) { return static_cast<uint8_t>(report[at]); };
    const bool continued = (byte(layout.continuedOffset) & layout.continuedMask) != 0;

    size_t length = layout.dataCapacity;
    if (layout.lengthOffset) {
        uint32_t count = 0;
        for (size_t k = 0; k < layout.lengthSize; ++k)
            count |= static_cast<uint32_t>(byte(*layout.lengthOffset + k)) << (8 * k);
        if (count > layout.dataCapacity) {
            dropping = true;  // a length past the data: the code it belongs to is lost
            SupportLog::write("HID POS code dropped: a report's length runs past its data");
        }
        else
            length = count;
    } else if (!continued) {
        // Without a count only the last report's field is padded, with NULs;
        // a NUL inside the chain is data.
        while (length > 0 && report[layout.dataOffset + length - 1] == '\0')
            --length;
    }
    if (!started && layout.symbologyOffset) {
        for (size_t k = 0; k < 3; ++k)
            if (char c = report[*layout.symbologyOffset + k])
                pending.symbology += c;
    }
    started = true;
    if (!dropping && pending.data.size() + length > kMaxCodeBytes) {
        dropping = true;
        SupportLog::write("HID POS code dropped: a chain of reports over 1 MiB");
    }
    if (dropping)
        pending.data.clear();
    else
        pending.data.append(report, layout.dataOffset, length);
    if (continued)
        return std::nullopt;

    std::optional<ScannedCode> code;
    if (!dropping && !pending.data.empty())
        code = std::move(pending);
    reset();
    return code;
}
