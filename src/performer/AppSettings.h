#pragma once
// Process-wide settings: the driver's language and two codes, plus a general
// record store. One mutex guards them all, so reader threads may read freely.
#include <cstdint>
#include <string>

#include "abi/Types.h"

class AppSettings {
public:
    AppSettings() = delete;

    static uint32_t locale();  // 0 Russian, 1 English
    static void setLocale(uint32_t code);
    static uint32_t ioDataType();
    static void setIODataType(uint32_t code);
    static uint32_t deviceType();
    static void setDeviceType(uint32_t code);

    static tVariant value(const std::wstring& key, const tVariant& defaultValue);
    static void setValue(const std::wstring& key, const tVariant& value);
};
