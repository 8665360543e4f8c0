#include "util/XApi.h"

#include <type_traits>

// The table is written out by hand; the headers at hand prove it right.
#define RAVLIN_CHECK_X_SIGNATURE(ret, name, args) \
    static_assert(std::is_same_v<ret(*) args, decltype(&::name)>, #name " differs from its header");
RAVLIN_X_FUNCTIONS(RAVLIN_CHECK_X_SIGNATURE)

const XApi* XApi::get()
{
    // Threads asking at once load it once. Every connection the add-in makes
    // is closed with the component or the window that made it, so at unload
    // nothing of ours is left in these libraries; a host or toolkit that uses
    // them holds them open itself.
    static const LoadedTable<XApi> loaded({
        dlopen("libX11.so.6", RTLD_NOW | RTLD_LOCAL),
        dlopen("libX11-xcb.so.1", RTLD_NOW | RTLD_LOCAL),
        dlopen("libXi.so.6", RTLD_NOW | RTLD_LOCAL),
        dlopen("libxcb.so.1", RTLD_NOW | RTLD_LOCAL),
        dlopen("libxcb-xinput.so.0", RTLD_NOW | RTLD_LOCAL),
    });
    return loaded.table();
}
