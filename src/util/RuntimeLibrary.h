#pragma once
// Libraries that only one feature needs (the toolkit, the X client libraries)
// are opened when that feature is first used, so that loading the add-in never
// requires them. A user lists its functions once as `X(ret, name, (args))`
// and makes its table's members with RAVLIN_FUNCTION_TABLE: a table with any
// library or symbol missing is not used at all (newCompleteTable).
#include <dlfcn.h>

#include <initializer_list>

#define RAVLIN_DECLARE_FUNCTION(ret, name, args) ret(*name) args = nullptr;
#define RAVLIN_RESOLVE_FUNCTION(ret, name, args) complete = resolveFunction(handles, #name, name) && complete;

// One pointer per function of LIST, and resolve(), which fills them from the
// given libraries and says false when any function is missing.
#define RAVLIN_FUNCTION_TABLE(LIST)                        \
    LIST(RAVLIN_DECLARE_FUNCTION)                           \
    bool resolve(std::initializer_list<void*> handles)      \
    {                                                       \
        bool complete = true;                               \
        LIST(RAVLIN_RESOLVE_FUNCTION)                       \
        return complete;                                    \
    }

// Looks the symbol up in each library in turn.
template <class Function>
bool resolveFunction(std::initializer_list<void*> handles, const char* name, Function*& slot)
{
    slot = nullptr;
    for (void* handle : handles)
        if (handle && (slot = reinterpret_cast<Function*>(dlsym(handle, name))))
            return true;
    return false;
}

// A new table filled from the given libraries, or null when one of them could
// not be opened or any function is missing. A table lives as long as the process.
template <class Table>
Table* newCompleteTable(std::initializer_list<void*> handles)
{
    for (void* handle : handles)
        if (!handle)
            return nullptr;
    auto* table = new Table();
    if (table->resolve(handles))
        return table;
    delete table;
    return nullptr;
}
