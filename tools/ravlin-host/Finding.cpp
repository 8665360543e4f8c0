#include "Finding.h"

#include <iostream>
#include <nlohmann/json.hpp>

namespace {

const char* nameOf(Finding::Level level)
{
    switch (level) {
    case Finding::Level::Info: return "info";
    case Finding::Level::Ok: return "ok";
    case Finding::Level::Problem: return "problem";
    case Finding::Level::Scan: return "scan";
    case Finding::Level::Advice: return "advice";
    }
    return "info";
}

}  // namespace

void printFinding(const Finding& finding, bool json)
{
    if (json) {
        nlohmann::ordered_json line{{"level", nameOf(finding.level)}, {"subject", finding.subject}, {"text", finding.text}};
        if (!finding.fix.empty())
            line["fix"] = finding.fix;
        std::cout << line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << std::endl;
        return;
    }
    std::string level = nameOf(finding.level);
    level.resize(8, ' ');
    std::cout << level << finding.subject << ": " << finding.text << "\n";
    if (!finding.fix.empty())
        std::cout << "        fix: " << finding.fix << "\n";
    std::cout.flush();
}
