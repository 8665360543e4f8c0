// A host with no toolkit of its own: loads the add-in, runs DeviceTest, and
// stays alive (so its clipboard stays pasteable) until its input closes.
#include <cstdio>
#include <iostream>

#include "TestHost.h"

int main()
{
    TestHost host;
    Component c = host.create(L"InputDevice");
    const CallResult r = c.call(L"DeviceTest");
    std::printf("DeviceTest returned %d result %d\n", r.returned, r.result.boolean);
    std::fflush(stdout);
    std::string line;
    std::getline(std::cin, line);
    IComponentBase* o = c.object();
    host.destroy(o);
    return 0;
}
