#pragma once
#include <linux/input.h>

#include <cstddef>
#include <string>

#include "input/DeviceSettings.h"
#include "input/DeviceWatch.h"
#include "input/EvdevEventReader.h"
#include "input/EvdevKeyboards.h"
#include "input/KeyDecoder.h"
#include "input/InputDevice.h"
#include "util/ReaderThread.h"

// Reads a scanner in keyboard mode straight from its kernel event device,
// where X cannot show it (a Wayland session, where X clients see only
// Xwayland's virtual keyboards, or no X server at all). The node is grabbed,
// so its keystrokes reach nobody else, and codes are delivered whatever
// window has the focus: under Wayland the focus cannot be known.
//
// An unplugged scanner leaves the source waiting (asleep until udev reports a
// change); a keyboard of the same name or ids coming back is bound again. A
// bound keyboard is never swapped for a newcomer while it is still there.
//
// The node and the decoder belong to the reader thread once it runs.
class InputDeviceEvdev : public InputDevice {
public:
    InputDeviceEvdev(DataCallback callback, const DeviceSettings& settings);
    ~InputDeviceEvdev() override;

    // Binds a keyboard of the configured name or ids and starts the reader;
    // false when none is there or it cannot be opened.
    bool start();

private:
    void run();
    bool bind();
    void unbind();
    void readEvents();
    bool boundStillListed() const;

    const DeviceSettings settings;
    KeyDecoder decoder;
    DeviceWatch watch{"input"};
    int fd = -1;  // -1 while unplugged
    EvdevKeyboard bound;
    // The kernel hands out whole events; a pseudo-terminal standing in for a
    // node (in tests) may split one, so a piece waits here for the rest.
    EvdevEventReader events;
    ReaderThread thread;
};
