#include "input/KeyFramer.h"

#include "input/DeviceSettings.h"
#include "input/NonPrintableKeys.h"
#include "util/CharsetConversion.h"
#include "util/SupportLog.h"
#include "util/SymbolCodecs.h"

namespace {

constexpr char kGroupSeparator = 29;
constexpr unsigned long kKeysymBracketRight = 0x5D;
constexpr unsigned long kKeysymF8 = 0xFFC5;

// No suffix: a pause ends the code. A NUL cannot be typed: a suffix of only
// NUL means Enter.
std::optional<char> suffixOf(const std::string& suffix)
{
    if (suffix.empty())
        return std::nullopt;
    return suffix.back() == '\0' ? '\r' : suffix.back();
}

}  // namespace

KeyFramer::KeyFramer(const DeviceSettings& settings)
    : suffix(suffixOf(settings.suffix)),
      gsKeysym(NonPrintableKeys::getKeyLinuxData(static_cast<NonPrintableKeys::KeyID>(settings.gsKey))),
      testMode(settings.testMode)
{
}

std::optional<std::wstring> KeyFramer::press(unsigned long keysym, bool control, int typed)
{
    // Scanners type GS as Ctrl+] or F8 (always), or as the configured key.
    if ((keysym == kKeysymBracketRight && control) || keysym == kKeysymF8 || isGsKey(keysym)) {
        append(std::string(1, kGroupSeparator));
        return std::nullopt;
    }
    if (testMode) {
        const std::string name = NonPrintableKeys::getKeyShortName(keysym);
        if (!name.empty()) {
            append(name);
            return std::nullopt;
        }
    }
    if (typed == kTypesNothing)
        return std::nullopt;
    return type(std::string(1, static_cast<char>(typed)));
}

std::optional<std::wstring> KeyFramer::type(const std::string& bytes)
{
    if (!suffix || bytes.size() != 1 || bytes[0] != *suffix) {
        append(bytes);
        return std::nullopt;
    }
    if (testMode)
        append(bytes);
    return finish();
}

void KeyFramer::discard()
{
    SupportLog::write("keyboard code dropped: the kernel lost events; skipping to the next suffix");
    code.clear();
    skipping = true;
}

std::optional<std::wstring> KeyFramer::pause()
{
    if (!waitsForPause())
        return std::nullopt;
    return finish();
}

void KeyFramer::append(const std::string& bytes)
{
    if (skipping)
        return;
    if (code.size() + bytes.size() > kMaxCodeBytes) {
        code.clear();
        code.shrink_to_fit();
        skipping = true;
        SupportLog::write("keyboard code dropped: over 1 MiB without a suffix; framing restarts at the next one");
        return;
    }
    code += bytes;
}

std::optional<std::wstring> KeyFramer::finish()
{
    if (skipping) {
        skipping = false;
        code.clear();
        return std::nullopt;
    }
    const std::wstring text = ConvertUTF8Input(raw2Base64(code).c_str());
    code.clear();
    return text;
}
