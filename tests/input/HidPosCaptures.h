#pragma once
// Reports real scanners sent, as published, replayed by the tests. Each
// capture names its source; the descriptors it is replayed with are rebuilt
// (the sources publish the reports, not the descriptors): the Bar Code
// Scanner page with a Byte Count (HidPosDescriptors.h, from the HID Point of
// Sale Usage Tables) and the vendor-defined layout, which put every byte of
// these reports in the same place.
#include <string>
#include <vector>

#include "HidPosDescriptors.h"

namespace hidpos_captures {

using hidpos_descriptors::bytes;

// A Honeywell Voyager 1602g (vendor 0c2e; the source gives no product id)
// answering the menu command REVINF. in USB HID mode, as printed in the README
// of github.com/HenkVanAsselt/python_hon_usbhid (commit 5144ad4): six 64-byte
// reports 2 of one message, AIM id "]X0", byte 63 = 1 while more follow, then
// a one-report message "REVINF" ACK "." with AIM id "]Z6". Bytes 61-62 hold
// the maker's code id ('?' or '6', then 0).
inline const std::vector<std::string> kVoyager1602gRevinf = {
    bytes({
        2, 56, 93, 88, 48, 80, 114, 111, 100, 117, 99, 116, 32, 78, 97, 109, 101, 58, 32, 86, 111, 121, 97,
        103, 101, 114, 32, 49, 54, 48, 50, 103, 13, 10, 66, 111, 111, 116, 32, 82, 101, 118, 105, 115, 105,
        111, 110, 58, 32, 58, 32, 56, 57, 57, 50, 13, 10, 83, 111, 102, 116, 63, 0, 1}),
    bytes({
        2, 56, 93, 88, 48, 119, 97, 114, 101, 32, 80, 97, 114, 116, 32, 78, 117, 109, 98, 101, 114, 58, 32, 67,
        87, 48, 48, 48, 48, 56, 50, 66, 66, 65, 13, 10, 83, 111, 102, 116, 119, 97, 114, 101, 32, 82, 101, 118,
        105, 115, 105, 111, 110, 58, 32, 36, 80, 114, 111, 106, 101, 63, 0, 1}),
    bytes({
        2, 56, 93, 88, 48, 99, 116, 82, 101, 118, 105, 115, 105, 111, 110, 58, 32, 49, 54, 51, 52, 53, 32, 13,
        10, 83, 101, 114, 105, 97, 108, 32, 78, 117, 109, 98, 101, 114, 58, 32, 49, 53, 50, 51, 50, 66, 49, 70,
        48, 67, 13, 10, 83, 117, 112, 112, 111, 114, 116, 101, 100, 63, 0, 1}),
    bytes({
        2, 56, 93, 88, 48, 32, 73, 70, 58, 32, 66, 108, 117, 101, 116, 111, 111, 116, 104, 13, 10, 80, 67, 66,
        32, 65, 115, 115, 101, 109, 98, 108, 121, 32, 73, 68, 58, 32, 48, 48, 48, 48, 48, 48, 13, 10, 69, 110,
        103, 105, 110, 101, 32, 70, 105, 114, 109, 119, 97, 114, 101, 63, 0, 1}),
    bytes({
        2, 56, 93, 88, 48, 32, 84, 121, 112, 101, 58, 32, 78, 47, 65, 32, 32, 32, 82, 101, 118, 105, 115, 105,
        111, 110, 58, 32, 78, 47, 65, 32, 32, 32, 83, 101, 114, 105, 97, 108, 32, 78, 117, 109, 98, 101, 114,
        58, 32, 78, 47, 65, 32, 32, 32, 67, 104, 101, 99, 107, 115, 63, 0, 1}),
    bytes({
        2, 9, 93, 88, 48, 117, 109, 58, 32, 78, 47, 65, 13, 10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
        0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 63, 0, 0}),
    bytes({
        2, 8, 93, 90, 54, 82, 69, 86, 73, 78, 70, 6, 46, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
        0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 54, 0, 0}),
};
// What the six reports of the first message carry, joined.
inline const std::string kVoyager1602gRevinfText =
    "Product Name: Voyager 1602g\r\nBoot Revision: : 8992\r\nSoftware Part Number: CW000082BBA\r\n"
    "Software Revision: $ProjectRevision: 16345 \r\nSerial Number: 15232B1F0C\r\nSupported IF: Bluetooth\r\n"
    "PCB Assembly ID: 000000\r\nEngine Firmware Type: N/A   Revision: N/A   Serial Number: N/A   Checksum: N/A\r\n";
inline const std::string kVoyager1602gRevinfAck = "REVINF\x06.";

}  // namespace hidpos_captures
