#include "input/KeyFramer.h"

#include "input/DeviceSettings.h"
#include "input/NonPrintableKeys.h"
#include "util/CharsetConversion.h"
#include "util/SymbolCodecs.h"

namespace {

constexpr char kGroupSeparator = 29;
constexpr unsigned long kKeysymBracketRight = 0x5D;
constexpr unsigned long kKeysymF8 = 0xFFC5;

}  // namespace

// A NUL cannot be typed: a suffix that is none, or only NUL, means Enter.
KeyFramer::KeyFramer(const DeviceSettings& settings)
    : suffix(settings.suffix.empty() || settings.suffix.back() == '\0' ? '\r' : settings.suffix.back()),
      gsKeysym(NonPrintableKeys::getKeyLinuxData(static_cast<NonPrintableKeys::KeyID>(settings.gsKey))),
      testMode(settings.testMode)
{
}

std::optional<std::wstring> KeyFramer::press(unsigned long keysym, bool control, int typed)
{
    // Scanners type GS as Ctrl+] or F8 (always), or as the configured key.
    if ((keysym == kKeysymBracketRight && control) || keysym == kKeysymF8 || keysym == gsKeysym) {
        code += kGroupSeparator;
        return std::nullopt;
    }
    if (testMode) {
        const std::string name = NonPrintableKeys::getKeyShortName(keysym);
        if (!name.empty()) {
            code += name;
            return std::nullopt;
        }
    }
    if (typed == kTypesNothing)
        return std::nullopt;
    const char byte = static_cast<char>(typed);
    if (byte != suffix) {
        code += byte;
        return std::nullopt;
    }
    if (testMode)
        code += byte;
    const std::wstring text = ConvertUTF8Input(raw2Base64(code).c_str());
    code.clear();
    return text;
}
