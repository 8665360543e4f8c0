#include "input/DeviceWatch.h"

#include <gtest/gtest.h>
#include <poll.h>

#include "HangTimeout.h"
#include "MockInput.h"

namespace {

// The testbed announces a device before plug() returns, so a working watch
// is readable at once; only a broken one waits this long.
const int kPatienceMs = static_cast<int>(std::chrono::milliseconds(kHangTimeout).count());

bool readable(const DeviceWatch& watch, int timeoutMs)
{
    pollfd p = {watch.fd(), POLLIN, 0};
    return poll(&p, 1, timeoutMs) == 1 && (p.revents & POLLIN);
}

}  // namespace

TEST(DeviceWatch, WakesWhenAnInputNodeComesAndGoes)
{
    MockInput devices;
    DeviceWatch input("input");
    DeviceWatch hidraw("hidraw");
    ASSERT_GE(input.fd(), 0);
    ASSERT_GE(hidraw.fd(), 0);
    EXPECT_FALSE(readable(input, 0));
    EXPECT_FALSE(input.changed());

    const MockKeyboard scanner = honeywellScanner();
    devices.plug(scanner);
    ASSERT_TRUE(readable(input, kPatienceMs));
    EXPECT_TRUE(input.changed());
    EXPECT_FALSE(readable(input, 0)) << "everything was taken";
    EXPECT_FALSE(readable(hidraw, 0)) << "another subsystem's watch stays asleep";

    devices.unplug(scanner);
    ASSERT_TRUE(readable(input, kPatienceMs));
    EXPECT_TRUE(input.changed());
    EXPECT_FALSE(readable(hidraw, 0));
}

TEST(DeviceWatch, ReportsNothingWhileNothingChanges)
{
    MockInput devices;
    devices.plug(atKeyboard());
    DeviceWatch input("input");
    ASSERT_GE(input.fd(), 0);
    EXPECT_FALSE(readable(input, 0)) << "devices present before the watch are no news";
    EXPECT_FALSE(input.changed());
}

TEST(DeviceWatch, AnUnknownSubsystemNeverWakes)
{
    MockInput devices;
    DeviceWatch none("no-such-subsystem");
    devices.plug(honeywellScanner());
    if (none.fd() >= 0) {
        EXPECT_FALSE(readable(none, 0));
    }
    EXPECT_FALSE(none.changed());
}
