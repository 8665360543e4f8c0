#include "input/UdevApi.h"

const UdevApi* UdevApi::get()
{
    static const UdevApi* const api = newCompleteTable<UdevApi>({dlopen("libudev.so.1", RTLD_NOW | RTLD_LOCAL)});
    return api;
}
