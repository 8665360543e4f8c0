#pragma once
// Finds where a point-of-sale scanner puts a scanned code in its input report,
// from the HID report descriptor the device declares.
//
// Two kinds of device are understood:
//  - the Bar Code Scanner usage page (0x8C): a report holding Decoded Data
//    (0xFE) and Decode Data Continued (0xFF), optionally Symbology Identifier
//    1-3 (0xFB-0xFD, the AIM identifier) and a Byte Count (Generic Desktop
//    0x3B, one to four whole bytes, little-endian) saying how many of the
//    data bytes are valid;
//  - the vendor-defined layout of a 64-byte report with id 2 on a vendor page,
//    whose descriptor names none of the fields, recognised by that structure
//    for any vendor id: byte 1 length, bytes 2-4 AIM id, bytes 5-60 data,
//    61-62 maker's code id, bit 0 of byte 63 "more follows" (Honeywell/Hand
//    Held Products' documented layout, sold under other makers' ids too);
//    Newland's own scanners (its vendor id) put the data at bytes 2-57, with
//    no AIM id, and the code id at 62.
// Anything else is not a scanner this driver reads.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

struct HidPosLayout {
    uint8_t reportId = 0;   // 0: the device numbers no reports
    size_t reportSize = 0;  // bytes of one report as read, the id byte included
    size_t dataOffset = 0;
    size_t dataCapacity = 0;
    std::optional<size_t> lengthOffset;     // valid data bytes in this report, little-endian
    size_t lengthSize = 1;                  // bytes of that count, 1 to 4
    std::optional<size_t> symbologyOffset;  // three bytes of AIM identifier
    size_t continuedOffset = 0;
    uint8_t continuedMask = 0;  // 0: every report holds a whole code
};

constexpr uint16_t kHoneywellVendorId = 0x0C2E;
constexpr uint16_t kNewlandVendorId = 0x1EAB;

// The layout of the device's scanned-data report, or none when the descriptor
// declares no scanner this driver understands. The USB vendor id tells
// Newland's vendor-defined layout from the others'.
std::optional<HidPosLayout> parseHidPosLayout(const std::string& descriptor, uint16_t vendorId);
