#include "input/HidPosAssembler.h"

HidPosAssembler::HidPosAssembler(const HidPosLayout& layout) : layout(layout) {}

void HidPosAssembler::reset()
{
    pending = ScannedCode{};
    pending.data.shrink_to_fit();
    started = false;
    dropping = false;
}

std::optional<ScannedCode> HidPosAssembler::feed(const std::string& report)
{
    auto byte = [&](size_t at) { return static_cast<uint8_t>(report[at]); };
    if (report.size() != layout.reportSize) {
        // hidraw hands over one whole report per read; anything else is a
        // fault whose "continued" flag is unknown, so the rest of its chain is
        // discarded too: a fragment must never pass for a code.
        reset();
        started = dropping = true;
        return std::nullopt;
    }
    if (layout.reportId != 0 && byte(0) != layout.reportId)
        return std::nullopt;  // another of the device's reports
    const bool continued = (byte(layout.continuedOffset) & layout.continuedMask) != 0;

    size_t length = layout.dataCapacity;
    if (layout.lengthOffset) {
        length = byte(*layout.lengthOffset);
        if (length > layout.dataCapacity)
            dropping = true;
    } else {
        // Without a length the field is padded with NULs.
        while (length > 0 && report[layout.dataOffset + length - 1] == '\0')
            --length;
    }
    if (!started && layout.symbologyOffset) {
        for (size_t k = 0; k < 3; ++k)
            if (char c = report[*layout.symbologyOffset + k])
                pending.symbology += c;
    }
    started = true;
    if (!dropping && pending.data.size() + length > kMaxCodeBytes)
        dropping = true;
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
