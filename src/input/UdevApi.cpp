#include "input/UdevApi.h"

#include <dlfcn.h>

namespace {

UdevApi* load()
{
    void* handle = dlopen("libudev.so.1", RTLD_NOW | RTLD_LOCAL);
    if (!handle)
        return nullptr;
    auto* api = new UdevApi();
    if (!api->resolve({handle})) {
        delete api;
        return nullptr;
    }
    return api;
}

}  // namespace

const UdevApi* UdevApi::get()
{
    static const UdevApi* const api = load();
    return api;
}
