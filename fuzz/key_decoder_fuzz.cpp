// Key events of any kind and order, as a kernel node or an X server could
// deliver them, with pauses between them.
// Input: first byte picks the settings (test mode, GS key, suffix); then each
// five bytes are one event: type, code (two bytes), value (two bytes, signed).
// A type byte of 0xFF is a pause instead. Nothing may crash, every code
// delivered must be Base64 text and none may exceed the bound on a code.
#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "input/DeviceSettings.h"
#include "input/KeyDecoder.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 1)
        return 0;
    static const std::string suffixes[] = {"\r", "\t", "", "/", std::string(1, '\0')};
    DeviceSettings settings;
    settings.testMode = data[0] & 1;
    settings.gsKey = static_cast<int32_t>((data[0] >> 1) % 23) - 1;
    settings.suffix = suffixes[(data[0] >> 6) % 5];
    KeyDecoder decoder(settings);
    for (size_t i = 1; i + 5 <= size; i += 5) {
        std::optional<std::wstring> text;
        if (data[i] == 0xFF) {
            text = decoder.pause();
        } else {
            input_event event{};
            event.type = data[i] % 4;  // EV_SYN, EV_KEY, EV_REL, EV_ABS: the first two matter
            event.code = static_cast<uint16_t>(data[i + 1] | data[i + 2] << 8);
            event.value = static_cast<int16_t>(data[i + 3] | data[i + 4] << 8);
            text = decoder.feed(event);
        }
        if (text) {
            for (wchar_t c : *text)
                if (c >= 128 || !(std::isalnum(static_cast<int>(c)) || c == L'+' || c == L'/' || c == L'='))
                    std::abort();
            if (text->size() > (kMaxCodeBytes + 2) / 3 * 4)
                std::abort();
        }
        if (decoder.dropping() && (data[i] & 0x80))
            decoder.resync(nullptr, nullptr);
    }
    return 0;
}
