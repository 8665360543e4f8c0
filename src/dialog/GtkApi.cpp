#include "dialog/GtkApi.h"

namespace {

GtkApi* loadGtk()
{
    // A host built on GTK 3 has it loaded already; GTK 2 must not join it.
    void* handle = dlopen("libgtk-3.so.0", RTLD_NOW | RTLD_NOLOAD);
    int version = 3;
    if (!handle) {
        handle = dlopen("libgtk-x11-2.0.so.0", RTLD_NOW | RTLD_LOCAL);
        version = 2;
    }
    GtkApi* api = newCompleteTable<GtkApi>({handle});
    if (api)
        api->majorVersion = version;
    return api;
}

}  // namespace

const GtkApi* GtkApi::get()
{
    static GtkApi* const api = loadGtk();
    if (!api)
        return nullptr;
    // A host that has not started the toolkit gets it started here; without a
    // display this fails quietly and the window is skipped.
    if (!api->gdk_display_get_default() && (api->majorVersion == 3 || !api->gtk_init_check(nullptr, nullptr)))
        return nullptr;
    return api;
}
