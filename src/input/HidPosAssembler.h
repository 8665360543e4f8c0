#pragma once
// Joins a scanner's reports into whole codes: reports flagged "continued"
// carry the next part of the same code, the first report without the flag
// ends it. A report whose id or size is not the scan report's is another of
// the device's reports and is passed over, leaving a chain in progress as it
// was. Bad reports never reach the consumer: a scan report with a length past
// its data field drops the code it belongs to (up to the end of its chain),
// and a code that grows past kMaxCodeBytes is dropped whole, reading resuming
// with the first report of the next code.
#include <cstddef>
#include <optional>
#include <string>

#include "input/CodeLimit.h"
#include "input/HidReportDescriptor.h"

struct ScannedCode {
    std::string data;       // the bytes exactly as encoded
    std::string symbology;  // AIM identifier, e.g. "]E0"; empty when the device sends none
};

class HidPosAssembler {
public:
    explicit HidPosAssembler(const HidPosLayout& layout);

    // One report as read from the device, report id included.
    std::optional<ScannedCode> feed(const std::string& report);
    // Forgets an unfinished code (the device went away).
    void reset();

private:
    bool isScanReport(const std::string& report) const;

    HidPosLayout layout;
    ScannedCode pending;
    bool started = false;
    bool dropping = false;  // the rest of a bad or over-long code is being discarded
};
