#pragma once
// The body both window-test hosts share: run DeviceTest, report, and stay
// alive (so the clipboard stays pasteable) until standard input closes.
#include <cstdio>
#include <iostream>
#include <string>

#include "TestHost.h"

inline int runDeviceTestThenWait(const std::string& extra = "")
{
    TestHost host;
    Component c = host.create(L"InputDevice");
    const CallResult r = c.call(L"DeviceTest");
    std::printf("DeviceTest returned %d result %d%s\n", r.returned, r.result.boolean, extra.c_str());
    std::fflush(stdout);
    std::string line;
    std::getline(std::cin, line);
    IComponentBase* o = c.object();
    host.destroy(o);
    return 0;
}
