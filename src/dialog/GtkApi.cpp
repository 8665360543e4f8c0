#include "dialog/GtkApi.h"

namespace {

// A host built on GTK 3 has it loaded already; GTK 2 must not join it. GTK 2,
// once started here, stays in the process after the add-in is unloaded: GLib
// keeps its types and the display's event source, which the host's main loop
// may still dispatch.
void* openGtk(int& majorVersion)
{
    majorVersion = 3;
    if (void* host = dlopen("libgtk-3.so.0", RTLD_NOW | RTLD_NOLOAD))
        return host;
    majorVersion = 2;
    return dlopen("libgtk-x11-2.0.so.0", RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
}

}  // namespace

const GtkApi* GtkApi::get()
{
    static int majorVersion = 0;
    static const LoadedTable<GtkApi> loaded({openGtk(majorVersion)});
    const GtkApi* api = loaded.table();
    if (!api)
        return nullptr;
    // A host that has not started the toolkit gets it started here; without a
    // display this fails quietly and the window is skipped.
    if (!api->gdk_display_get_default() && (majorVersion == 3 || !api->gtk_init_check(nullptr, nullptr)))
        return nullptr;
    return api;
}
