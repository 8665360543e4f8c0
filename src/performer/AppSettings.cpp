#include "performer/AppSettings.h"

#include <mutex>

#include "performer/KeyValue.h"

namespace {

std::mutex g_lock;
uint32_t g_locale = 0;
uint32_t g_ioDataType = 0;
uint32_t g_deviceType = 16;
KeyValue<std::wstring, tVariant> g_values;

uint32_t read(const uint32_t& field)
{
    std::lock_guard<std::mutex> guard(g_lock);
    return field;
}

void write(uint32_t& field, uint32_t code, uint32_t highest)
{
    std::lock_guard<std::mutex> guard(g_lock);
    if (code <= highest)
        field = code;
}

}  // namespace

uint32_t AppSettings::locale() { return read(g_locale); }
void AppSettings::setLocale(uint32_t code) { write(g_locale, code, 1); }
uint32_t AppSettings::ioDataType() { return read(g_ioDataType); }
void AppSettings::setIODataType(uint32_t code) { write(g_ioDataType, code, 2); }
uint32_t AppSettings::deviceType() { return read(g_deviceType); }
void AppSettings::setDeviceType(uint32_t code) { write(g_deviceType, code, 32); }

tVariant AppSettings::value(const std::wstring& key, const tVariant& defaultValue)
{
    std::lock_guard<std::mutex> guard(g_lock);
    return g_values.value(key, defaultValue);
}

void AppSettings::setValue(const std::wstring& key, const tVariant& value)
{
    std::lock_guard<std::mutex> guard(g_lock);
    g_values.setValue(key, value);
}
