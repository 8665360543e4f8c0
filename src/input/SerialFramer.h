#pragma once
// Cuts a serial byte stream into codes. With a suffix, its last byte ends a code
// and the suffix's leading bytes are trimmed off; a pause (the line going quiet)
// drops an unfinished code. Without a suffix, a pause ends the code.
#include <optional>
#include <string>

#include "input/CodeLimit.h"

class SerialFramer {
public:
    explicit SerialFramer(std::string suffix);

    std::optional<std::string> feed(char byte);
    std::optional<std::string> quiet();
    bool pending() const { return !buffer.empty() || overflowed; }

private:
    std::optional<std::string> finish();

    std::string suffix;
    std::string buffer;
    bool overflowed = false;  // discarding the rest of an over-long code
};
