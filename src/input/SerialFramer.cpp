#include "input/SerialFramer.h"

#include "util/SupportLog.h"

SerialFramer::SerialFramer(std::string suffix) : suffix(std::move(suffix)) {}

std::optional<std::string> SerialFramer::feed(char byte)
{
    if (!suffix.empty() && byte == suffix.back()) {
        const bool wasOverflowed = overflowed;
        overflowed = false;
        if (buffer.empty() || wasOverflowed) {
            buffer.clear();
            return std::nullopt;
        }
        return finish();
    }
    if (overflowed)
        return std::nullopt;
    if (buffer.size() >= kMaxCodeBytes) {
        buffer.clear();
        buffer.shrink_to_fit();
        overflowed = true;
        SupportLog::write("serial code dropped: over 1 MiB without a suffix; framing restarts at the next one");
        return std::nullopt;
    }
    buffer += byte;
    return std::nullopt;
}

std::optional<std::string> SerialFramer::quiet()
{
    const bool wasOverflowed = overflowed;
    overflowed = false;
    if (buffer.empty() || !suffix.empty() || wasOverflowed) {
        if (!buffer.empty() && !suffix.empty())
            SupportLog::write("serial code dropped: the line paused before its suffix came");
        buffer.clear();
        return std::nullopt;
    }
    return finish();
}

std::optional<std::string> SerialFramer::finish()
{
    std::string code;
    code.swap(buffer);
    // The suffix's leading bytes were stored as data; only its last byte is compared.
    const size_t trim = suffix.empty() ? 0 : suffix.size() - 1;
    if (code.size() < trim)
        return std::nullopt;  // shorter than the suffix itself: not a code
    code.resize(code.size() - trim);
    return code;
}
