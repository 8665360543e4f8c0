// Entry points the host looks up by name: the only symbols the library exports.
#include <string>

#include "abi/ComponentBase.h"
#include "addin/RavlinNative.h"
#include "abi/StringConversion.h"
#include "util/CharsetConversion.h"
#include "util/RuntimeLibrary.h"
#include "util/SupportLog.h"

#define RAVLIN_EXPORT extern "C" __attribute__((visibility("default")))

#ifdef RAVLIN_STATIC_CXX_RUNTIME
namespace __gnu_cxx {
void __freeres() noexcept;  // the C++ runtime's own; no header declares it
}
#endif

namespace {

// Made when the library is loaded, so it goes last when the host unloads it.
// The C++ runtime linked into the library allocated a pool for exceptions
// thrown when memory runs out; it is given back here, once no component (and
// so none of their threads) is left.
struct Unloading {
    ~Unloading()
    {
#ifdef RAVLIN_STATIC_CXX_RUNTIME
        if (liveComponents.load() == 0)
            __gnu_cxx::__freeres();
#endif
    }
} unloading;

// A host text made at compile time: the host may load and unload the library
// any number of times, and nothing of it is left behind.
template <size_t N>
struct ShortText {
    constexpr explicit ShortText(const char16_t (&text)[N]) : units{}
    {
        for (size_t i = 0; i < N; ++i)
            units[i] = text[i];
    }
    unsigned short units[N];
};

constexpr ShortText kClassNames(u"InputDevice|CardReaderDevice");

}  // namespace

RAVLIN_EXPORT const unsigned short* GetClassNames()
{
    return kClassNames.units;
}

RAVLIN_EXPORT long GetClassObject(const unsigned short* name, IComponentBase** object)
{
    if (!object)
        return 0;
    if (*object)
        return reinterpret_cast<long>(*object);
    try {
        const std::wstring className = convFromShortWchar(name, getLenShortWcharStr(name));
        if (className == L"InputDevice")
            *object = new RavlinNative(L"InputDevice");
        else if (className == L"CardReaderDevice")
            *object = new RavlinNative(L"CardReaderDevice");
        SupportLog::write("component " + wstr2str(className) + (*object ? " created" : " unknown"));
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
