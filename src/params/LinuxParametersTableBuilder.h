#pragma once
#include <string>
#include <vector>

#include "params/ParametersTableBuilder.h"

// Fills in what depends on the machine: its serial ports and X keyboards.
class LinuxParametersTableBuilder : public ParametersTableBuilder {
public:
    explicit LinuxParametersTableBuilder(bool russian) : ParametersTableBuilder(russian) {}

    void BuildPortPart() override;
    void BuildKeyboardDevicePart() override;
    void BuildCOMPortSpeedPart() override;

    // Port items for the nodes named pattern*, numbered from offset + 1.
    std::wstring GetCOMDevicesList(std::string pattern, std::wstring caption, int offset);
    std::wstring GetEventDeviceListEnties();
    static std::wstring keyboardItems(const std::vector<std::string>& deviceNames);
};
