// A host built on GTK 3: it starts GTK 3 itself, then loads the add-in and runs
// DeviceTest, whose window must then be made with GTK 3 too.
#include <gtk/gtk.h>

#include <cstdio>
#include <iostream>

#include "TestHost.h"

int main(int argc, char** argv)
{
    gtk_init(&argc, &argv);
    TestHost host;
    Component c = host.create(L"InputDevice");
    const CallResult r = c.call(L"DeviceTest");
    std::printf("DeviceTest returned %d result %d gtk %u\n", r.returned, r.result.boolean, gtk_get_major_version());
    std::fflush(stdout);
    std::string line;
    std::getline(std::cin, line);
    IComponentBase* o = c.object();
    host.destroy(o);
    return 0;
}
