#pragma once
// A plain statement of the serial framing rules, to check the reader against:
// the stream is a list of bursts separated by pauses longer than the quiet
// window. With a suffix, each run ended by the suffix's last byte is a code
// (trimmed of the suffix's other bytes; empty runs and runs shorter than that
// trim give nothing) and an unfinished run at a burst's end is lost. Without a
// suffix, each non-empty burst is one code.
#include <string>
#include <vector>

inline std::vector<std::string> expectedCodes(const std::vector<std::string>& bursts,
                                              const std::string& suffix)
{
    std::vector<std::string> codes;
    for (const std::string& burst : bursts) {
        if (suffix.empty()) {
            if (!burst.empty())
                codes.push_back(burst);
            continue;
        }
        size_t start = 0;
        for (size_t end; (end = burst.find(suffix.back(), start)) != std::string::npos;
             start = end + 1) {
            std::string run = burst.substr(start, end - start);
            if (!run.empty() && run.size() >= suffix.size() - 1)
                codes.push_back(run.substr(0, run.size() - (suffix.size() - 1)));
        }
    }
    return codes;
}
