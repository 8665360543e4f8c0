#pragma once
// Libraries that only one feature needs (the toolkit, the X client libraries,
// libudev) are opened when that feature is first used, so that loading the
// add-in never requires them. A user lists its functions once as
// `X(ret, name, (args))`, makes its table's members with
// RAVLIN_FUNCTION_TABLE and keeps a LoadedTable in a function-local static:
// a table with any library or symbol missing is not used at all, and the
// libraries are closed again when the host unloads the add-in.
#include <dlfcn.h>

#include <algorithm>
#include <atomic>
#include <initializer_list>
#include <vector>

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

// Components alive in the process. A host that exits with components alive
// still has their threads in the run-time libraries, so those are closed only
// when none is.
extern std::atomic<int> liveComponents;

// A table filled from the given libraries, which it closes when destroyed:
// as a function-local static, when the add-in is unloaded, after everything
// made later than it (so a static that uses the table must get it first).
template <class Table>
class LoadedTable {
public:
    explicit LoadedTable(std::initializer_list<void*> opened) : handles(opened)
    {
        complete = std::find(handles.begin(), handles.end(), nullptr) == handles.end() && functions.resolve(opened);
    }
    ~LoadedTable()
    {
        if (liveComponents.load() != 0)
            return;
        for (void* handle : handles)
            if (handle)
                dlclose(handle);
    }
    LoadedTable(const LoadedTable&) = delete;
    LoadedTable& operator=(const LoadedTable&) = delete;

    // Null when a library could not be opened or a function is missing.
    const Table* table() const { return complete ? &functions : nullptr; }

private:
    std::vector<void*> handles;
    Table functions;
    bool complete = false;
};
