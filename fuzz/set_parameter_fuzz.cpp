// SetParameter with any name and any value record the host could send: every
// type code, null string pointers, lengths that do not match the text.
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "performer/RavlinPerformerLinux.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const wchar_t* const names[] = {L"Port", L"KeyboardDevice", L"DataBits", L"StopBit", L"Speed",
                                           L"Prefix", L"Suffix", L"Timeout", L"TimeoutCOM", L"COMEncoding",
                                           L"GSSymbolKey", L"LogFileFolder", L"EquipmentType", L"OutputDataType",
                                           L"IgnoreKeyboardState", L"port", L""};
    if (size < 12)
        return 0;
    RavlinPerformerLinux performer([](const std::wstring&, EquipmentCode, OutputDataType, const std::wstring&) {});
    const wchar_t* name = names[data[0] % (sizeof names / sizeof names[0])];
    tVariant value{};
    std::memcpy(&value, data + 1, 8);
    value.vt = static_cast<uint16_t>(data[9] | data[10] << 8);
    std::memcpy(&value.wstrLen, data + 11, 1);
    value.wstrLen *= 4096;
    std::vector<unsigned short> text;
    for (size_t i = 12; i + 1 < size; i += 2)
        text.push_back(static_cast<unsigned short>(data[i] | data[i + 1] << 8));
    text.push_back(0);
    if (value.vt == VTYPE_PWSTR)
        value.pwstrVal = (data[1] & 1) ? nullptr : text.data();
    performer.SetParameter(name, value);
    performer.GetParameter(name);
    performer.GetLastError(data[2] & 1);
    return 0;
}
