// A host that uses the add-in as a platform does and then unloads it, five
// times over: a keyboard source and a serial source (ttyUSB0), each fed one
// code by the test, the settings form and the test window, which the test
// closes. It links no X, udev or toolkit library itself, so whatever of those
// is still loaded after the last unload was left by the add-in. Each step is
// reported on standard output for the test to follow.
#include <cstdio>
#include <fstream>
#include <string>

#include "AddinHost.h"

namespace {

std::string narrow(const std::wstring& text)
{
    return std::string(text.begin(), text.end());  // the codes fed are ASCII
}

void say(const std::string& line)
{
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

// The libraries a keyboard or serial source, the form and the window open,
// which should be gone with the add-in.
std::string stillMapped()
{
    std::ifstream maps("/proc/self/maps");
    std::string line, found;
    for (const char* name : {"RavlinNativeLin64", "libudev.so", "libxcb-xinput.so"})
        for (maps.clear(), maps.seekg(0); std::getline(maps, line);)
            if (line.find(name) != std::string::npos) {
                found += std::string(found.empty() ? "" : " ") + name;
                break;
            }
    return found.empty() ? "none" : found;
}

bool cycle(int n)
{
    const std::string at = "cycle " + std::to_string(n) + " ";
    AddinHost host(addinLibrary(RAVLIN_LIBRARY_PATH));
    Component keyboard = host.create(L"InputDevice");
    keyboard.setParameter(L"Port", intVar(0));
    keyboard.setParameter(L"KeyboardDevice", keyboard.str(L"Virtual core XTEST keyboard"));
    Component serial = host.create(L"InputDevice");
    serial.setParameter(L"Port", intVar(129));  // ttyUSB0
    const std::wstring keyboardId = keyboard.open(), serialId = serial.open();
    if (keyboardId.empty() || serialId.empty()) {
        say(at + "open failed");
        return false;
    }
    say(at + "opened");
    for (const HostEvent& event : host.connection.waitForEvents(2))
        say(at + "code " + narrow(event.data));
    const CallResult form = serial.call(L"GetParameters");
    say(at + "form " + std::to_string(form.returned && !form.params.empty() ? form.params[0].text.size() : 0));
    say(at + "window");
    say(at + "DeviceTest " + std::to_string(keyboard.call(L"DeviceTest").returned));
    keyboard.close(keyboardId);
    serial.close(serialId);
    for (Component* c : {&keyboard, &serial}) {
        IComponentBase* object = c->object();
        host.destroy(object);
    }
    host.unload();
    say(at + "unloaded");
    return true;
}

}  // namespace

int main()
{
    try {
        for (int n = 1; n <= 5; ++n)
            if (!cycle(n))
                return 1;
    } catch (const std::exception& e) {
        say(std::string("failed: ") + e.what());
        return 1;
    }
    say("still mapped: " + stillMapped());
    return 0;
}
