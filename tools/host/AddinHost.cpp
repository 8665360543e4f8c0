#include "AddinHost.h"

#include <dlfcn.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

std::vector<unsigned short> toShort(const std::wstring& text)
{
    std::vector<unsigned short> out;
    for (wchar_t c : text)
        out.push_back(static_cast<unsigned short>(c));
    out.push_back(0);
    return out;
}

std::wstring fromShort(const unsigned short* text)
{
    std::wstring out;
    if (text)
        for (; *text; ++text)
            out += static_cast<wchar_t>(*text);
    return out;
}

HostMemory::~HostMemory()
{
    for (void* b : blocks)
        std::free(b);
}

bool HostMemory::AllocMemory(void** block, unsigned long size)
{
    if (failAllocations)
        return false;
    *block = std::malloc(size);
    if (!*block)
        return false;
    std::lock_guard<std::mutex> g(lock);
    blocks.insert(*block);
    return true;
}

void HostMemory::FreeMemory(void** block)
{
    if (!block || !*block)
        return;
    {
        std::lock_guard<std::mutex> g(lock);
        if (!blocks.erase(*block))
            throw std::logic_error("FreeMemory of a block the host never gave out");
    }
    std::free(*block);
    *block = nullptr;
}

size_t HostMemory::liveBlocks() const
{
    std::lock_guard<std::mutex> g(lock);
    return blocks.size();
}

#define UNEXPECTED                               \
    {                                            \
        std::lock_guard<std::mutex> g(lock);     \
        ++unexpectedCalls;                       \
    }
bool HostConnection::AddError(unsigned short, const unsigned short*, const unsigned short*, long) { UNEXPECTED return false; }
bool HostConnection::Read(unsigned short*, tVariant*, long*, unsigned short**) { UNEXPECTED return false; }
bool HostConnection::Write(unsigned short*, tVariant*) { UNEXPECTED return false; }
bool HostConnection::RegisterProfileAs(unsigned short*) { UNEXPECTED return false; }
long HostConnection::GetEventQueueDepth() { UNEXPECTED return depth; }
bool HostConnection::CleanEventBuffer() { UNEXPECTED return false; }
bool HostConnection::SetStatusLine(unsigned short*) { UNEXPECTED return false; }
void HostConnection::ResetStatusLine() { UNEXPECTED }
void* HostConnection::GetInterface(int) { UNEXPECTED return nullptr; }
#undef UNEXPECTED

bool HostConnection::SetEventQueueDepth(long d)
{
    std::lock_guard<std::mutex> g(lock);
    depth = d;
    return true;
}

bool HostConnection::PostExternalEvent(const unsigned short* source, const unsigned short* name,
                                       const unsigned short* data)
{
    const auto at = std::chrono::steady_clock::now();
    HostEvent e{fromShort(source), fromShort(name), fromShort(data),
                static_cast<pid_t>(syscall(SYS_gettid)), at};
    {
        std::lock_guard<std::mutex> g(lock);
        recorded.push_back(std::move(e));
    }
    arrived.notifyAll();
    return true;
}

std::vector<HostEvent> HostConnection::waitForEvents(size_t n, std::chrono::milliseconds deadline)
{
    std::unique_lock<std::mutex> g(lock);
    arrived.waitFor(g, deadline, [&] { return recorded.size() >= n; });
    return recorded;
}

std::optional<HostEvent> HostConnection::waitForEvent(size_t n, std::chrono::milliseconds deadline)
{
    std::unique_lock<std::mutex> g(lock);
    if (!arrived.waitFor(g, deadline, [&] { return recorded.size() >= n; }))
        return std::nullopt;
    return recorded[n - 1];
}

std::vector<HostEvent> HostConnection::events() const
{
    std::lock_guard<std::mutex> g(lock);
    return recorded;
}

void HostConnection::clear()
{
    std::lock_guard<std::mutex> g(lock);
    recorded.clear();
}

long HostConnection::queueDepth() const
{
    std::lock_guard<std::mutex> g(lock);
    return depth;
}

int HostConnection::otherSlotCalls() const
{
    std::lock_guard<std::mutex> g(lock);
    return unexpectedCalls;
}

Value::Value(const tVariant& v)
    : type(v.vt), integer(v.lVal), boolean(v.vt == VTYPE_BOOL && (v.lVal & 0xFF) != 0),
      nullString(v.vt == VTYPE_PWSTR && !v.pwstrVal),
      text(v.vt == VTYPE_PWSTR ? fromShort(v.pwstrVal) : std::wstring())
{
}

tVariant intVar(int value)
{
    tVariant v{};
    v.vt = VTYPE_I4;
    v.lVal = value;
    return v;
}

tVariant boolVar(bool value)
{
    tVariant v{};
    v.vt = VTYPE_BOOL;
    v.bVal = value;
    return v;
}

Component::Component(IComponentBase* object, HostMemory& memory)
    : obj(object), memory(memory)
{
}

tVariant Component::str(const std::wstring& text)
{
    tVariant v{};
    v.vt = VTYPE_PWSTR;
    const auto units = toShort(text);
    void* block = nullptr;
    if (!memory.AllocMemory(&block, units.size() * sizeof(unsigned short)))
        throw std::runtime_error("host allocation failed");
    std::copy(units.begin(), units.end(), static_cast<unsigned short*>(block));
    v.pwstrVal = static_cast<unsigned short*>(block);
    v.wstrLen = static_cast<uint32_t>(text.size());
    return v;
}

long Component::nParams(const std::wstring& method)
{
    const auto name = toShort(method);
    return obj->GetNParams(obj->FindMethod(name.data()));
}

CallResult Component::call(const std::wstring& method, std::vector<tVariant> params)
{
    const auto name = toShort(method);
    const long num = obj->FindMethod(name.data());
    if (num < 0)
        throw std::invalid_argument("no such method");
    std::set<unsigned short*> strings;
    for (const auto& p : params)
        if (p.vt == VTYPE_PWSTR && p.pwstrVal)
            strings.insert(p.pwstrVal);
    CallResult out;
    tVariant result{};
    out.returned = obj->CallAsFunc(num, &result, params.data(), static_cast<long>(params.size()));
    out.result = Value(result);
    for (const auto& p : params)
        out.params.emplace_back(p);
    // The platform owns every string now: ours and whatever the driver put in.
    if (result.vt == VTYPE_PWSTR && result.pwstrVal)
        strings.insert(result.pwstrVal);
    for (const auto& p : params)
        if (p.vt == VTYPE_PWSTR && p.pwstrVal)
            strings.insert(p.pwstrVal);
    for (unsigned short* s : strings) {
        void* b = s;
        memory.FreeMemory(&b);
    }
    return out;
}

bool Component::setParameter(const std::wstring& name, const tVariant& value)
{
    const CallResult r = call(L"SetParameter", {str(name), value});
    return r.returned && r.result.type == VTYPE_BOOL && r.result.boolean;
}

std::wstring Component::open()
{
    const CallResult r = call(L"Open", {tVariant{}});
    if (!r.returned || !r.result.boolean)
        return std::wstring();
    return r.params[0].text;
}

bool Component::close(const std::wstring& id)
{
    const CallResult r = call(L"Close", {str(id)});
    return r.returned && r.result.boolean;
}

std::string addinLibrary(const std::string& otherwise)
{
    const char* chosen = std::getenv("RAVLIN_LIBRARY");
    return chosen && *chosen ? chosen : otherwise;
}

AddinHost::AddinHost(const std::string& libraryPath)
{
    handle = dlopen(libraryPath.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle)
        throw std::runtime_error(std::string("dlopen: ") + dlerror());
    getClassNames = reinterpret_cast<GetClassNamesFn>(dlsym(handle, "GetClassNames"));
    getClassObject = reinterpret_cast<GetClassObjectFn>(dlsym(handle, "GetClassObject"));
    destroyObject = reinterpret_cast<DestroyObjectFn>(dlsym(handle, "DestroyObject"));
    setPlatformCapabilities =
        reinterpret_cast<SetPlatformCapabilitiesFn>(dlsym(handle, "SetPlatformCapabilities"));
    if (!getClassNames || !getClassObject || !destroyObject || !setPlatformCapabilities)
        throw std::runtime_error("the add-in lacks an entry point");
}

// The library stays loaded unless unload() is called: a platform never unloads
// an add-in with live objects, and unloading would hide leaks from the
// sanitizers' reports.
AddinHost::~AddinHost() = default;

void AddinHost::unload()
{
    if (handle)
        dlclose(handle);
    handle = nullptr;
    getClassNames = nullptr;
    getClassObject = nullptr;
    destroyObject = nullptr;
    setPlatformCapabilities = nullptr;
}

std::wstring AddinHost::classNames()
{
    return fromShort(getClassNames());
}

IComponentBase* AddinHost::createRaw(const std::wstring& className)
{
    const auto name = toShort(className);
    IComponentBase* object = nullptr;
    getClassObject(name.data(), &object);
    return object;
}

Component AddinHost::create(const std::wstring& className, const std::wstring& locale)
{
    IComponentBase* object = createRaw(className);
    if (!object)
        throw std::runtime_error("GetClassObject failed");
    setPlatformCapabilities(3);
    object->setMemManager(&memory);
    object->Init(&connection);
    const auto loc = toShort(locale);
    object->SetLocale(loc.data());
    unsigned short* registered = nullptr;
    object->RegisterExtensionAs(&registered);
    void* b = registered;
    memory.FreeMemory(&b);
    return Component(object, memory);
}

long AddinHost::destroy(IComponentBase*& object)
{
    return destroyObject(&object);
}
