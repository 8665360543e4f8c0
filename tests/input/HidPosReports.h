#pragma once
// Builds the reports a scanner of a given layout sends for one code.
#include <algorithm>
#include <string>
#include <vector>

#include "input/HidReportDescriptor.h"

inline std::vector<std::string> reportsFor(const HidPosLayout& layout, const std::string& symbology,
                                           const std::string& data)
{
    std::vector<std::string> reports;
    size_t at = 0;
    do {
        std::string r(layout.reportSize, '\0');
        if (layout.reportId)
            r[0] = static_cast<char>(layout.reportId);
        const size_t n = std::min(layout.dataCapacity, data.size() - at);
        r.replace(layout.dataOffset, n, data, at, n);
        at += n;
        if (layout.lengthOffset)
            for (size_t k = 0; k < layout.lengthSize; ++k)
                r[*layout.lengthOffset + k] = static_cast<char>(n >> (8 * k));
        if (layout.symbologyOffset) {
            std::string aim = symbology;
            aim.resize(3, '\0');
            r.replace(*layout.symbologyOffset, 3, aim);
        }
        if (at < data.size())
            r[layout.continuedOffset] = static_cast<char>(r[layout.continuedOffset] | layout.continuedMask);
        reports.push_back(r);
    } while (at < data.size());
    return reports;
}
