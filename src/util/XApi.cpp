#include "util/XApi.h"

#include <type_traits>

// The table is written out by hand; the headers at hand prove it right.
#define RAVLIN_CHECK_X_SIGNATURE(ret, name, args) \
    static_assert(std::is_same_v<ret(*) args, decltype(&::name)>, #name " differs from its header");
RAVLIN_X_FUNCTIONS(RAVLIN_CHECK_X_SIGNATURE)

const XApi* XApi::get()
{
    // A function-local static: threads asking at once load it once. Nothing
    // opened here is ever closed, not even when another of the libraries is
    // missing: Xlib keeps process-wide state (error handlers, locks, display
    // connections the host or its toolkit may share), and unloading it under
    // them would leave pointers into code that is gone.
    static const XApi* const api = newCompleteTable<XApi>({
        dlopen("libX11.so.6", RTLD_NOW | RTLD_LOCAL),
        dlopen("libX11-xcb.so.1", RTLD_NOW | RTLD_LOCAL),
        dlopen("libXi.so.6", RTLD_NOW | RTLD_LOCAL),
        dlopen("libxcb.so.1", RTLD_NOW | RTLD_LOCAL),
        dlopen("libxcb-xinput.so.0", RTLD_NOW | RTLD_LOCAL),
    });
    return api;
}
