#pragma once
// Keyboards the reader finds through udev and reads through /dev/input, built
// in a umockdev testbed. Programs using it run under umockdev-wrapper, which
// routes /sys, /dev and udev's netlink socket into the testbed.
//
// What the testbed does differently from a kernel, and the tests expect:
// EVIOCGRAB always succeeds; a node is a pseudo-terminal underneath, so
// events written before a reader opens it still arrive and a removed node
// never reports an error to a reader that keeps it open.
#include <linux/input.h>

#include <memory>
#include <string>
#include <vector>

typedef struct _UMockdevTestbed UMockdevTestbed;

struct MockKeyboard {
    int event = 0;       // /dev/input/event<event>
    std::string name;    // the kernel's name of the input device
    std::string usbIds;  // "vvvv:pppp", or empty for a keyboard on the AT port
};

// A Honeywell-like scanner in keyboard mode, and an ordinary AT keyboard.
MockKeyboard honeywellScanner(int event = 12);
MockKeyboard atKeyboard(int event = 3);

class MockInput {
public:
    MockInput();
    ~MockInput();
    MockInput(const MockInput&) = delete;
    MockInput& operator=(const MockInput&) = delete;

    // Announces the device (parents first) and makes its node.
    void plug(const MockKeyboard& keyboard);
    // Announces the removal, then deletes the device and its node. The
    // testbed cannot make that node again: a device plugged back gets another.
    void unplug(const MockKeyboard& keyboard);

    // From now on the node answers every grab with EBUSY, as when another
    // program holds it (umockdev's ioctl emulation answers for the node).
    void holdElsewhere(const MockKeyboard& keyboard);
    // From now on the node tells the keys held and the LEDs lit as given
    // (EVIOCGKEY, EVIOCGLED), as after events the reader never saw.
    void reportKeyState(const MockKeyboard& keyboard, const std::vector<int>& keysDown,
                        const std::vector<int>& ledsLit);
    struct KeyState {
        std::vector<unsigned char> keysDown, ledsLit;
    };

    // Lets every user into the testbed (umockdev's sockets included) but
    // leaves the event nodes to root, as nodes are without a rule giving the
    // seat's user access.
    void nodesForRootOnly();

    // Writes events to the node as the kernel would deliver them.
    void send(const MockKeyboard& keyboard, const std::vector<input_event>& events);
    // Presses and releases each key (with SYN_REPORT after each), holding
    // Left Shift around the ones given as negative codes.
    void type(const MockKeyboard& keyboard, const std::vector<int>& keys);
    // The events of typing ASCII text on a US keyboard (Enter for '\r').
    static std::vector<int> keysOf(const std::string& text);

private:
    void attachIoctlHandler(const MockKeyboard& keyboard, void (*handler)(), void* data);

    UMockdevTestbed* testbed;
    // The ioctl handlers run on a GLib main loop of their own.
    struct HandlerLoop;
    std::unique_ptr<HandlerLoop> handlers;
    std::vector<std::unique_ptr<KeyState>> states;  // read by the handlers until they stop
};

input_event keyEvent(int code, int value);
input_event synEvent(int code = SYN_REPORT);
std::string nodePath(const MockKeyboard& keyboard);
