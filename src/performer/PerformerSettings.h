#pragma once
#include <cstdint>
#include <functional>
#include <string>
#include <unordered_map>

#include "addin/Types.h"

// What a device captures when it is opened, and the setters that fill it.
struct PerformerSettings {
    using Setter = std::function<bool(const tVariant&)>;

    uint32_t equipmentCode = 16;  // 16 barcode scanner, 32 magnetic card reader
    uint32_t outputDataType = 0;  // 0 text, 1 human-readable bytes, 2 Base64
    std::unordered_map<std::wstring, Setter> setters;
};
