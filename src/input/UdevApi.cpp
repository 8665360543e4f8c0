#include "input/UdevApi.h"

const UdevApi* UdevApi::get()
{
    static const LoadedTable<UdevApi> loaded({dlopen("libudev.so.1", RTLD_NOW | RTLD_LOCAL)});
    return loaded.table();
}
