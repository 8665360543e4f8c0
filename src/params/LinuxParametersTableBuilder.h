#pragma once
#include <string>
#include <vector>

#include "input/PortFamily.h"
#include "params/ParametersTableBuilder.h"

// Fills in what depends on the machine: its serial ports and X keyboards.
class LinuxParametersTableBuilder : public ParametersTableBuilder {
public:
    explicit LinuxParametersTableBuilder(bool russian) : ParametersTableBuilder(russian) {}

    void BuildPortPart() override;
    void BuildKeyboardDevicePart() override;
    void BuildCOMPortSpeedPart() override;

    // Port items for the family's nodes under /dev.
    std::wstring GetCOMDevicesList(const PortFamily& family);
    // Port items for the hidraw nodes that are scanners this driver reads.
    static std::wstring GetHidPosDevicesList();
    std::wstring GetEventDeviceListEnties();
    static std::wstring keyboardItems(const std::vector<std::string>& deviceNames);
};
