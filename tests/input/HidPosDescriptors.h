#pragma once
// Report descriptors of the devices the HID POS tests play.
//
// Usage numbers are those of the USB HID Point of Sale Usage Tables 1.02,
// Bar Code Scanner page 0x8C (Scanned Data Report 0x12, Symbology Identifier
// 1-3 0xFB-0xFD, Decoded Data 0xFE, Decode Data Continued 0xFF) and of the HID
// Usage Tables' Generic Desktop page (Byte Count 0x3B). The item encoding is
// that of the Device Class Definition for HID 1.11, section 6.2.2.
#include <string>

namespace hidpos_descriptors {

inline std::string bytes(std::initializer_list<unsigned char> b) { return std::string(b.begin(), b.end()); }

// A scanner on the Bar Code Scanner page with no Byte Count: report id 2,
// the three AIM bytes, 56 bytes of Decoded Data padded with NULs, one
// "continued" bit and seven bits of padding (61 bytes with the id).
inline const std::string kStandard = bytes({
    0x05, 0x8C, 0x09, 0x02, 0xA1, 0x01,  // Usage Page (Bar Code Scanner), Usage (Bar Code Scanner), Collection (Application)
    0x09, 0x12, 0xA1, 0x02,              //   Usage (Scanned Data Report), Collection (Logical)
    0x85, 0x02,                          //     Report ID (2)
    0x15, 0x00, 0x26, 0xFF, 0x00,        //     Logical Minimum (0), Logical Maximum (255)
    0x75, 0x08, 0x95, 0x03,              //     Report Size (8), Report Count (3)
    0x09, 0xFB, 0x09, 0xFC, 0x09, 0xFD,  //     Usage (Symbology Identifier 1..3)
    0x81, 0x02,                          //     Input (Data, Var, Abs)
    0x95, 0x38, 0x09, 0xFE,              //     Report Count (56), Usage (Decoded Data)
    0x82, 0x02, 0x01,                    //     Input (Data, Var, Abs, Buffered Bytes)
    0x25, 0x01, 0x75, 0x01, 0x95, 0x01,  //     Logical Maximum (1), Report Size (1), Report Count (1)
    0x09, 0xFF, 0x81, 0x02,              //     Usage (Decode Data Continued), Input (Data, Var, Abs)
    0x75, 0x07, 0x81, 0x03,              //     Report Size (7), Input (Constant): padding
    0xC0, 0xC0,                          //   End Collection, End Collection
});

// The same page with a Byte Count before the AIM bytes and the maker's code id
// after the data, as Honeywell scanners in HID POS mode declare it: report id
// 2, byte 1 count, bytes 2-4 AIM, 5-60 data, 61-62 code id (vendor page
// 0xFF66), eight "continued" bits in byte 63 of which bit 0 is set while more
// follows (64 bytes with the id).
inline const std::string kStandardWithByteCount = bytes({
    0x05, 0x8C, 0x09, 0x02, 0xA1, 0x01, 0x09, 0x12, 0xA1, 0x02,
    0x85, 0x02, 0x15, 0x00, 0x26, 0xFF, 0x00, 0x75, 0x08,
    0x95, 0x01, 0x05, 0x01, 0x09, 0x3B, 0x81, 0x02,              // Usage Page (Generic Desktop), Usage (Byte Count)
    0x95, 0x03, 0x05, 0x8C, 0x09, 0xFB, 0x09, 0xFC, 0x09, 0xFD, 0x81, 0x02,
    0x95, 0x38, 0x09, 0xFE, 0x82, 0x02, 0x01,
    0x06, 0x66, 0xFF, 0x95, 0x02, 0x09, 0x04, 0x09, 0x00, 0x81, 0x02,  // Usage Page (0xFF66), Code ID, Undefined
    0x05, 0x8C, 0x25, 0x01, 0x75, 0x01, 0x95, 0x08, 0x09, 0xFF, 0x81, 0x02,
    0xC0, 0xC0,
});

// The same with a second input report: a 4-byte status report (id 3, three
// bytes on the maker's vendor page 0xFF66) beside the 64-byte scan report 2.
inline const std::string kStandardWithStatusReport = kStandardWithByteCount + bytes({
    0x06, 0x66, 0xFF, 0x09, 0x01, 0xA1, 0x01,  // Usage Page (0xFF66), Usage (1), Collection (Application)
    0x85, 0x03, 0x15, 0x00, 0x26, 0xFF, 0x00,  //   Report ID (3), Logical Minimum (0), Logical Maximum (255)
    0x75, 0x08, 0x95, 0x03, 0x09, 0x02, 0x81, 0x02,  // Report Size (8), Report Count (3), Usage (2), Input
    0xC0,
});

// The Bar Code Scanner page with a 16-bit Byte Count (the Generic Desktop
// usage is a count of any size): report id 2, bytes 1-2 count (little-endian),
// 3-5 AIM, 6-61 data, eight "continued" bits in byte 62 (63 bytes with the id).
inline const std::string kStandardWith16BitByteCount = bytes({
    0x05, 0x8C, 0x09, 0x02, 0xA1, 0x01, 0x09, 0x12, 0xA1, 0x02,
    0x85, 0x02, 0x15, 0x00,
    0x27, 0xFF, 0xFF, 0x00, 0x00, 0x75, 0x10, 0x95, 0x01,        // Logical Maximum (65535), Report Size (16)
    0x05, 0x01, 0x09, 0x3B, 0x81, 0x02,                          // Usage Page (Generic Desktop), Usage (Byte Count)
    0x26, 0xFF, 0x00, 0x75, 0x08, 0x95, 0x03,                    // Logical Maximum (255), Report Size (8)
    0x05, 0x8C, 0x09, 0xFB, 0x09, 0xFC, 0x09, 0xFD, 0x81, 0x02,
    0x95, 0x38, 0x09, 0xFE, 0x82, 0x02, 0x01,
    0x25, 0x01, 0x75, 0x01, 0x95, 0x08, 0x09, 0xFF, 0x81, 0x02,
    0xC0, 0xC0,
});

// Vendor-defined descriptors: one application collection on a vendor page
// with a 63-byte input report 2 (and a 63-byte output report 4) whose fields
// carry no usage of their own. The layout of report 2 comes from the makers'
// manuals: Honeywell/HHP byte 1 length, 2-4 AIM, 5-60 data, 61 code id, bit 0
// of byte 63 "more follows"; Newland (integration guide of its fixed-mount
// scanners, VID 0x1EAB) byte 1 length, 2-57 data, 62 code id, bit 0 of byte 63.
inline std::string vendorDefined(unsigned char pageLow, unsigned char pageHigh)
{
    return bytes({
        0x06, pageLow, pageHigh, 0x09, 0x01, 0xA1, 0x01,  // Usage Page (vendor), Usage (1), Collection (Application)
        0x15, 0x00, 0x26, 0xFF, 0x00, 0x75, 0x08, 0x95, 0x3F,
        0x85, 0x02, 0x09, 0x02, 0x81, 0x02,  // Report ID (2), Usage (2), Input (Data, Var, Abs)
        0x85, 0x04, 0x09, 0x04, 0x91, 0x02,  // Report ID (4), Usage (4), Output (Data, Var, Abs)
        0xC0,
    });
}
inline const std::string kHoneywellVendor = vendorDefined(0x66, 0xFF);
inline const std::string kNewlandVendor = vendorDefined(0x00, 0xFF);

// A three-button boot mouse: the example of HID 1.11, Appendix B.2.
inline const std::string kMouse = bytes({
    0x05, 0x01, 0x09, 0x02, 0xA1, 0x01, 0x09, 0x01, 0xA1, 0x00,
    0x05, 0x09, 0x19, 0x01, 0x29, 0x03, 0x15, 0x00, 0x25, 0x01, 0x95, 0x03, 0x75, 0x01, 0x81, 0x02,
    0x95, 0x01, 0x75, 0x05, 0x81, 0x01,
    0x05, 0x01, 0x09, 0x30, 0x09, 0x31, 0x15, 0x81, 0x25, 0x7F, 0x75, 0x08, 0x95, 0x02, 0x81, 0x06,
    0xC0, 0xC0,
});

}  // namespace hidpos_descriptors
