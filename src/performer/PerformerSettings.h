#pragma once
#include <functional>
#include <string>
#include <unordered_map>

#include "abi/DeviceCodes.h"
#include "abi/Types.h"

// What a device's events are named and formed by, captured when it is opened,
// and the setters through which the host changes the parameters.
struct PerformerSettings {
    using Setter = std::function<bool(const tVariant&)>;

    EquipmentCode equipmentCode = EquipmentCode::BarcodeScanner;
    OutputDataType outputDataType = OutputDataType::Text;  // any number the host gives is kept
    std::unordered_map<std::wstring, Setter> setters;
};
