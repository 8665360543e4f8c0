#include "input/HidrawNode.h"

#include <dirent.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>

#include "input/PortFamily.h"

namespace {

std::optional<std::string> readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return std::nullopt;
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace

uint32_t HidrawNode::portNumber() const { return kHidPosFamily.base + number; }

std::string HidrawNode::devicePath() const { return portDevicePath(portNumber()); }

std::optional<HidrawNode> HidrawNode::ofPort(uint32_t port)
{
    if (portFamilyOf(port) != &kHidPosFamily)
        return std::nullopt;
    return read(port - kHidPosFamily.base);
}

std::optional<HidrawNode> HidrawNode::read(unsigned number)
{
    HidrawNode node;
    node.number = number;
    // The HID device the node belongs to: its uevent names the USB ids
    // (HID_ID=bus:vendor:product), the product and the serial number.
    const std::string device = node.sysfsPath() + "/device/";
    const auto uevent = readFile(device + "uevent");
    if (!uevent)
        return std::nullopt;
    std::istringstream lines(*uevent);
    for (std::string line; std::getline(lines, line);) {
        unsigned bus = 0, vendor = 0, product = 0;
        if (std::sscanf(line.c_str(), "HID_ID=%x:%x:%x", &bus, &vendor, &product) == 3) {
            node.vendorId = static_cast<uint16_t>(vendor);
            node.productId = static_cast<uint16_t>(product);
        } else if (line.rfind("HID_NAME=", 0) == 0) {
            node.product = line.substr(9);
        } else if (line.rfind("HID_UNIQ=", 0) == 0) {
            node.serial = line.substr(9);
        }
    }
    if (const auto descriptor = readFile(device + "report_descriptor"))
        node.layout = parseHidPosLayout(*descriptor, node.vendorId);
    return node;
}

std::vector<HidrawNode> HidrawNode::list()
{
    std::vector<HidrawNode> nodes;
    DIR* dir = opendir("/sys/class/hidraw");
    if (!dir)
        return nodes;
    while (dirent* entry = readdir(dir)) {
        unsigned number = 0;
        char rest = 0;
        if (std::sscanf(entry->d_name, "hidraw%u%c", &number, &rest) == 1)
            if (auto node = read(number))
                nodes.push_back(*node);
    }
    closedir(dir);
    std::sort(nodes.begin(), nodes.end(), [](const HidrawNode& a, const HidrawNode& b) { return a.number < b.number; });
    return nodes;
}
