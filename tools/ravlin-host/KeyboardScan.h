#pragma once
// A test scan from a kernel keyboard: the events go through the driver's own
// key decoder, so the bytes are what the driver delivers, and the keys that
// typed them are watched for what the bytes no longer show: how GS was typed,
// a key standing for GS, keys of another keyboard country, Caps Lock.
#include <linux/input.h>

#include <optional>
#include <string>
#include <vector>

#include "ScanAdvice.h"
#include "input/EvdevEventReader.h"
#include "input/KeyDecoder.h"

class KeyboardScan {
public:
    // Takes the descriptor of the open node. With no suffix set codes end at a
    // pause, so a suffix key stays in the bytes.
    KeyboardScan(int fd, std::string kernelNodeRule);
    ~KeyboardScan();
    KeyboardScan(const KeyboardScan&) = delete;
    KeyboardScan& operator=(const KeyboardScan&) = delete;

    int fd() const { return node; }
    // The events waiting on the node; the scans they complete.
    std::vector<ScanEvidence> read();
    // The node failed a read (unplugged): nothing more comes from it.
    bool gone() const { return lost; }
    // Milliseconds of quiet that end the code under way, or -1.
    int pauseTimeout() const { return decoder.pauseTimeout(); }
    std::optional<ScanEvidence> pause();

private:
    static DeviceSettings settings();
    void watch(const input_event& event);
    std::optional<ScanEvidence> completed(const std::optional<std::wstring>& base64);

    const int node;
    KeyDecoder decoder;
    ScanEvidence scan;  // the keys of the code under way
    bool control = false, alt = false;
    std::string altDigits;
    EvdevEventReader events;
    bool capsLit = false;
    bool lost = false;
};
