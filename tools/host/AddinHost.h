#pragma once
// Plays the host platform: loads the add-in with dlopen, creates components
// through its four exported functions and records every external event, so
// that whoever reads them does so on its own thread, never the driver's.
#include <sys/types.h>

#include <chrono>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "abi/AddInDefBase.h"
#include "abi/ComponentBase.h"
#include "abi/IMemoryManager.h"
#include "HangTimeout.h"
#include "MonotonicCondition.h"

struct HostEvent {
    std::wstring source;
    std::wstring name;
    std::wstring data;
    pid_t thread;
    std::chrono::steady_clock::time_point at;  // when PostExternalEvent was entered
};

// The platform's allocator; counts live blocks so a leak of a returned string shows.
class HostMemory : public IMemoryManager {
public:
    ~HostMemory() override;
    bool AllocMemory(void** block, unsigned long size) override;
    void FreeMemory(void** block) override;
    size_t liveBlocks() const;
    bool failAllocations = false;

private:
    mutable std::mutex lock;
    std::set<void*> blocks;
};

class HostConnection : public IAddInDefBaseEx {
public:
    bool AddError(unsigned short, const unsigned short*, const unsigned short*, long) override;
    bool Read(unsigned short*, tVariant*, long*, unsigned short**) override;
    bool Write(unsigned short*, tVariant*) override;
    bool RegisterProfileAs(unsigned short*) override;
    bool SetEventQueueDepth(long depth) override;
    long GetEventQueueDepth() override;
    bool PostExternalEvent(const unsigned short* source, const unsigned short* name,
                           const unsigned short* data) override;
    bool CleanEventBuffer() override;
    bool SetStatusLine(unsigned short*) override;
    void ResetStatusLine() override;
    void* GetInterface(int) override;

    // Waits until at least n events have arrived; returns what has arrived.
    std::vector<HostEvent> waitForEvents(size_t n, std::chrono::milliseconds deadline = kHangTimeout);
    std::vector<HostEvent> events() const;
    // The n-th event (counting from 1), waited for; an empty event on time-out.
    std::optional<HostEvent> waitForEvent(size_t n, std::chrono::milliseconds deadline = kHangTimeout);
    void clear();
    long queueDepth() const;
    int otherSlotCalls() const;

private:
    mutable std::mutex lock;
    MonotonicCondition arrived;
    std::vector<HostEvent> recorded;
    long depth = 0;
    int unexpectedCalls = 0;
};

// A value the driver gave back, decoded from the record before the host frees it.
struct Value {
    explicit Value(const tVariant& v = tVariant{});
    uint16_t type;
    int integer;
    bool boolean;
    bool nullString;  // a string record whose pointer is null
    std::wstring text;
};

struct CallResult {
    bool returned = false;
    Value result;
    std::vector<Value> params;
};

class Component {
public:
    Component(IComponentBase* object, HostMemory& memory);
    IComponentBase* object() const { return obj; }

    // Calls a method by name the way the platform does; strings in and out are
    // host-allocated and freed after the call.
    CallResult call(const std::wstring& method, std::vector<tVariant> params);
    CallResult call(const std::wstring& method) { return call(method, std::vector<tVariant>(static_cast<size_t>(nParams(method)))); }
    long nParams(const std::wstring& method);

    bool setParameter(const std::wstring& name, const tVariant& value);
    // Returns the device id, or an empty string when Open failed.
    std::wstring open();
    bool close(const std::wstring& id);

    tVariant str(const std::wstring& text);

private:
    IComponentBase* obj;
    HostMemory& memory;
};

tVariant intVar(int value);
tVariant boolVar(bool value);

// The add-in a host loads: the file named by RAVLIN_LIBRARY when that is set
// (an installed or released build), otherwise the given one.
std::string addinLibrary(const std::string& otherwise);

class AddinHost {
public:
    explicit AddinHost(const std::string& libraryPath);
    ~AddinHost();

    std::wstring classNames();
    // setMemManager, Init, SetLocale, RegisterExtensionAs, in the platform's order.
    Component create(const std::wstring& className, const std::wstring& locale = L"ru_RU");
    IComponentBase* createRaw(const std::wstring& className);
    long destroy(IComponentBase*& object);
    // Unloads the library, as a platform does once every object is destroyed;
    // nothing of this host may be used after.
    void unload();

    HostMemory memory;
    HostConnection connection;

    using GetClassNamesFn = const unsigned short* (*)();
    using GetClassObjectFn = long (*)(const unsigned short*, IComponentBase**);
    using DestroyObjectFn = long (*)(IComponentBase**);
    using SetPlatformCapabilitiesFn = int (*)(int);

    GetClassNamesFn getClassNames = nullptr;
    GetClassObjectFn getClassObject = nullptr;
    DestroyObjectFn destroyObject = nullptr;
    SetPlatformCapabilitiesFn setPlatformCapabilities = nullptr;

private:
    void* handle = nullptr;
};

std::vector<unsigned short> toShort(const std::wstring& text);
std::wstring fromShort(const unsigned short* text);
