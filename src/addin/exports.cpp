// Entry points the host looks up by name: the only symbols the library exports.
#include <string>

#include "addin/ComponentBase.h"
#include "addin/RavlinNative.h"
#include "addin/StringConversion.h"
#include "util/Logger.h"

#define RAVLIN_EXPORT extern "C" __attribute__((visibility("default")))

RAVLIN_EXPORT const unsigned short* GetClassNames()
{
    static unsigned short* const names = [] {
        unsigned short* text = nullptr;
        convToShortWchar(&text, L"InputDevice|CardReaderDevice");
        return text;
    }();
    return names;
}

RAVLIN_EXPORT long GetClassObject(const unsigned short* name, IComponentBase** object)
{
    if (!object)
        return 0;
    if (*object)
        return reinterpret_cast<long>(*object);
    try {
        const std::string logPath = "/tmp/" + getLogFileName();  // logging is off: unused
        (void)logPath;
        const std::wstring className = convFromShortWchar(name, getLenShortWcharStr(name));
        if (className == L"InputDevice")
            *object = new RavlinNative(L"InputDevice", L"Штрихкод");
        else if (className == L"CardReaderDevice")
            *object = new RavlinNative(L"CardReaderDevice", L"ДанныеКарты");
    } catch (...) {
        *object = nullptr;
    }
    return reinterpret_cast<long>(*object);
}

RAVLIN_EXPORT long DestroyObject(IComponentBase** object)
{
    if (!object || !*object)
        return -1;
    delete *object;
    *object = nullptr;
    return 0;
}

RAVLIN_EXPORT int SetPlatformCapabilities(int)
{
    return 1;
}
