#include "input/HidReportDescriptor.h"

#include <map>
#include <vector>

namespace {

constexpr uint32_t kPageGenericDesktop = 0x01;
constexpr uint32_t kPageBarCodeScanner = 0x8C;
constexpr uint32_t kByteCount = kPageGenericDesktop << 16 | 0x3B;
constexpr uint32_t kSymbologyIdentifier1 = kPageBarCodeScanner << 16 | 0xFB;
constexpr uint32_t kDecodedData = kPageBarCodeScanner << 16 | 0xFE;
constexpr uint32_t kDecodeDataContinued = kPageBarCodeScanner << 16 | 0xFF;

// hidraw hands over at most this much of one report; a descriptor declaring
// more describes no real scanner, and the bound keeps a hostile one cheap.
constexpr uint32_t kMaxReportBits = 4096 * 8;
constexpr size_t kMaxUsageRanges = 256;
constexpr size_t kMaxElements = 65536;

// One input element of a report: where it sits and what it means.
struct Element {
    uint32_t bitOffset;
    uint32_t bitSize;
    uint32_t usage;  // page << 16 | id
};

struct Report {
    uint32_t bits = 0;
    std::vector<Element> elements;
    uint32_t applicationPage = 0;  // of the application collection it was declared in
};

struct Globals {
    uint32_t usagePage = 0;
    uint32_t reportSize = 0;
    uint32_t reportCount = 0;
    uint8_t reportId = 0;
};

struct UsageRange {
    uint32_t first, last;
};

class Parser {
public:
    // False for a descriptor that cannot describe a real device.
    bool parse(const std::string& d)
    {
        size_t i = 0;
        while (i < d.size()) {
            const uint8_t prefix = static_cast<uint8_t>(d[i++]);
            if (prefix == 0xFE) {  // long item: never used by scanners, skipped whole
                if (i + 2 > d.size())
                    return false;
                i += 2 + static_cast<uint8_t>(d[i]);
                continue;
            }
            const size_t size = (prefix & 3) == 3 ? 4 : (prefix & 3);
            if (i + size > d.size())
                return false;
            uint32_t value = 0;
            for (size_t k = 0; k < size; ++k)
                value |= static_cast<uint32_t>(static_cast<uint8_t>(d[i + k])) << (8 * k);
            i += size;
            if (!item((prefix >> 2) & 3, prefix >> 4, value, size))
                return false;
        }
        return true;
    }

    std::map<uint8_t, Report> inputs;
    bool numbered = false;

private:
    bool item(int type, int tag, uint32_t value, size_t size)
    {
        switch (type) {
        case 0: return mainItem(tag, value);
        case 1: return globalItem(tag, value);
        case 2: localItem(tag, value, size); return true;
        default: return true;
        }
    }

    bool mainItem(int tag, uint32_t value)
    {
        if (tag == 0x8 && !input())
            return false;
        if (tag == 0xA && value == 1)
            applicationPage = usages.empty() ? globals.usagePage : usages.front().first >> 16;
        usages.clear();
        usageMinimum.reset();
        return true;
    }

    bool globalItem(int tag, uint32_t value)
    {
        switch (tag) {
        case 0x0: globals.usagePage = value & 0xFFFF; break;
        case 0x7: globals.reportSize = value; break;
        case 0x8:
            if (value == 0 || value > 0xFF)
                return false;
            globals.reportId = static_cast<uint8_t>(value);
            numbered = true;
            break;
        case 0x9: globals.reportCount = value; break;
        case 0xA: stack.push_back(globals); break;
        case 0xB:
            if (stack.empty())
                return false;
            globals = stack.back();
            stack.pop_back();
            break;
        default: break;
        }
        return stack.size() < 64;
    }

    void localItem(int tag, uint32_t value, size_t size)
    {
        // A four-byte usage names its own page; a shorter one takes the current page.
        const uint32_t usage = size == 4 ? value : (globals.usagePage << 16 | (value & 0xFFFF));
        if (tag == 0x0)
            addUsages(usage, usage);
        else if (tag == 0x1)
            usageMinimum = usage;
        else if (tag == 0x2 && usageMinimum && *usageMinimum <= usage) {
            addUsages(*usageMinimum, usage);
            usageMinimum.reset();
        }
    }

    void addUsages(uint32_t first, uint32_t last)
    {
        if (usages.size() < kMaxUsageRanges)
            usages.push_back({first, last});
    }

    // The usage of the index-th element: the index-th listed, or the last one
    // when the list is shorter than the count.
    uint32_t usageAt(uint32_t index) const
    {
        if (usages.empty())
            return 0;
        for (const UsageRange& r : usages) {
            const uint32_t span = r.last - r.first + 1;
            if (index < span)
                return r.first + index;
            index -= span;
        }
        return usages.back().last;
    }

    bool input()
    {
        Report& report = inputs[globals.reportId];
        report.applicationPage = applicationPage;
        const uint64_t bits = static_cast<uint64_t>(globals.reportSize) * globals.reportCount;
        if (globals.reportCount > kMaxReportBits || bits > kMaxReportBits || report.bits + bits > kMaxReportBits)
            return false;
        if (globals.reportSize > 0) {
            if ((elements += globals.reportCount) > kMaxElements)
                return false;
            for (uint32_t k = 0; k < globals.reportCount; ++k)
                report.elements.push_back({report.bits + k * globals.reportSize, globals.reportSize, usageAt(k)});
        }
        report.bits += static_cast<uint32_t>(bits);
        return true;
    }

    Globals globals;
    std::vector<Globals> stack;
    std::vector<UsageRange> usages;
    std::optional<uint32_t> usageMinimum;
    size_t elements = 0;
    uint32_t applicationPage = 0;  // of the application collection open now
};

bool byteAligned(const Element& e) { return e.bitSize == 8 && e.bitOffset % 8 == 0; }

// A count of whole bytes that fits 32 bits.
bool wholeBytes(const Element& e) { return e.bitSize % 8 == 0 && e.bitSize >= 8 && e.bitSize <= 32 && e.bitOffset % 8 == 0; }

// The scanned-data report on the Bar Code Scanner page.
std::optional<HidPosLayout> standardLayout(const Parser& p)
{
    for (const auto& [id, report] : p.inputs) {
        const std::vector<Element>& el = report.elements;
        HidPosLayout layout;
        layout.reportId = id;
        const size_t idBytes = p.numbered ? 1 : 0;
        layout.reportSize = idBytes + (report.bits + 7) / 8;
        bool haveData = false;
        for (size_t k = 0; k < el.size(); ++k) {
            const Element& e = el[k];
            const size_t byte = idBytes + e.bitOffset / 8;
            if (e.usage == kDecodedData && !haveData) {
                size_t n = 0;
                while (k + n < el.size() && el[k + n].usage == kDecodedData && byteAligned(el[k + n]) &&
                       el[k + n].bitOffset == e.bitOffset + 8 * n)
                    ++n;
                if (n == 0)
                    return std::nullopt;  // data that is not whole bytes
                layout.dataOffset = byte;
                layout.dataCapacity = n;
                haveData = true;
                k += n - 1;
            } else if (e.usage == kDecodeDataContinued && layout.continuedMask == 0) {
                layout.continuedOffset = byte;
                layout.continuedMask = static_cast<uint8_t>(1u << (e.bitOffset % 8));
            } else if (e.usage == kByteCount && wholeBytes(e) && !layout.lengthOffset) {
                layout.lengthOffset = byte;
                layout.lengthSize = e.bitSize / 8;
            } else if (e.usage == kSymbologyIdentifier1 && byteAligned(e) && k + 2 < el.size() &&
                       el[k + 1].usage == kSymbologyIdentifier1 + 1 && byteAligned(el[k + 1]) &&
                       el[k + 2].usage == kSymbologyIdentifier1 + 2 && byteAligned(el[k + 2]) &&
                       el[k + 2].bitOffset == e.bitOffset + 16 && !layout.symbologyOffset) {
                layout.symbologyOffset = byte;
            }
        }
        if (haveData)
            return layout;
    }
    return std::nullopt;
}

// The vendor-defined layout, known by its structure whatever the vendor id
// (the same scanners are sold under many): input report 2 of an application
// collection on a vendor-defined page, 63 data bytes of 8 bits each. Security
// keys (report 0 on page 0xF1D0), HID++ receivers (reports 0x10-0x21), UPSes
// (power device pages), keyboards and mice declare nothing of the kind.
std::optional<HidPosLayout> vendorLayout(const Parser& p, uint16_t vendorId)
{
    const auto report = p.inputs.find(2);
    if (!p.numbered || report == p.inputs.end() || report->second.applicationPage < 0xFF00 ||
        report->second.bits != 63 * 8)
        return std::nullopt;
    for (const Element& e : report->second.elements)
        if (e.bitSize != 8)
            return std::nullopt;
    HidPosLayout layout;
    layout.reportId = 2;
    layout.reportSize = 64;
    layout.lengthOffset = 1;
    layout.dataCapacity = 56;
    layout.continuedOffset = 63;
    layout.continuedMask = 0x01;
    if (vendorId == kNewlandVendorId) {
        layout.dataOffset = 2;
        return layout;
    }
    layout.symbologyOffset = 2;
    layout.dataOffset = 5;
    return layout;
}

}  // namespace

std::optional<HidPosLayout> parseHidPosLayout(const std::string& descriptor, uint16_t vendorId)
{
    Parser p;
    if (!p.parse(descriptor))
        return std::nullopt;
    if (auto layout = standardLayout(p))
        return layout;
    return vendorLayout(p, vendorId);
}
