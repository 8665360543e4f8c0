#pragma once
// A test that drives components through the test host: what it created is
// destroyed at the end, and every test ends by checking that no string handed
// to the host was left behind and that no unused host slot was called.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "TestHost.h"
#include "VirtualSerialPort.h"

class ComponentFixture : public ::testing::Test {
protected:
    void TearDown() override
    {
        for (IComponentBase*& o : created)
            if (o)
                host.destroy(o);
        EXPECT_EQ(host.memory.liveBlocks(), 0u) << "a string handed to the host was left behind";
        EXPECT_EQ(host.connection.otherSlotCalls(), 0);
    }
    Component make(const std::wstring& cls = L"InputDevice")
    {
        Component c = host.create(cls);
        created.push_back(c.object());
        return c;
    }
    Component makeOnPort(int port, const std::wstring& cls = L"InputDevice")
    {
        Component c = make(cls);
        EXPECT_TRUE(c.setParameter(L"Port", intVar(port)));
        return c;
    }
    // Writes the bytes and waits for the event they should raise.
    std::optional<HostEvent> scan(VirtualSerialPort& line, const std::string& bytes)
    {
        const size_t before = host.connection.events().size();
        line.write(bytes);
        return host.connection.waitForEvent(before + 1);
    }

    TestHost host;
    std::vector<IComponentBase*> created;
};
