#include "input/PortFamily.h"

#include <cstring>

const PortFamily kPortFamilies[4] = {
    {"ttyS", 1, L"COM", L"COM", 1, false},
    {"ttyACM", 65, L"Virtual COM", L"ACM", 1, false},
    {"ttyUSB", 129, L"USB COM", L"USB", 1, false},
    {"hidraw", 193, L"HID POS", L"hidraw", 0, true},
};
const PortFamily& kHidPosFamily = kPortFamilies[3];

// Ranges are not guarded: a ttyS index of 64 reads as ttyACM0, as the form numbers them.
const PortFamily* portFamilyOf(uint32_t port)
{
    if (port == 0)
        return nullptr;
    const PortFamily* found = &kPortFamilies[0];
    for (const PortFamily& family : kPortFamilies)
        if (port >= family.base)
            found = &family;
    return found;
}

std::string portDevicePath(uint32_t port)
{
    const PortFamily* family = portFamilyOf(port);
    return family ? "/dev/" + std::string(family->node) + std::to_string(port - family->base) : std::string();
}

std::optional<uint32_t> portNumberOfNode(const PortFamily& family, const std::string& path)
{
    const std::string prefix = "/dev/" + std::string(family.node);
    if (path.size() <= prefix.size() || path.compare(0, prefix.size(), prefix) != 0 ||
        path.size() - prefix.size() > 9)
        return std::nullopt;
    uint32_t index = 0;
    for (size_t i = prefix.size(); i < path.size(); ++i) {
        if (path[i] < '0' || path[i] > '9')
            return std::nullopt;
        index = index * 10 + static_cast<uint32_t>(path[i] - '0');
    }
    return family.base + index;
}

std::wstring portShortName(uint32_t port)
{
    const PortFamily* family = portFamilyOf(port);
    return family ? family->shortName + std::to_wstring(port - family->base + family->shortFrom) : std::wstring();
}
