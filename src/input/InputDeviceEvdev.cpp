#include "input/InputDeviceEvdev.h"

#include <linux/input.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "util/SupportLog.h"
#include "util/Logger.h"

InputDeviceEvdev::InputDeviceEvdev(DataCallback callback, const DeviceSettings& settings)
    : InputDevice(std::move(callback)), settings(settings), decoder(settings)
{
}

InputDeviceEvdev::~InputDeviceEvdev()
{
    thread.stop();
    unbind();
}

bool InputDeviceEvdev::start()
{
    if (!bind())
        return false;
    return thread.start([this] { run(); });
}

// Takes the first listed keyboard of the wanted name or ids that can be had:
// with two alike, a second source gets the one the first left free.
bool InputDeviceEvdev::bind()
{
    int cause = ENODEV;
    for (const EvdevKeyboard& keyboard : listEvdevKeyboards()) {
        if (!namesKeyboard(settings.keyboardDevice, keyboard))
            continue;
        // In test mode the keyboard types on where it types: the device test
        // only listens.
        fd = openKeyboardNode(keyboard.node, !settings.testMode);
        if (fd >= 0) {
            bound = keyboard;
            events.reset();
            decoder.resync(nullptr, nullptr);
            SupportLog::write("kernel keyboard bound: " + keyboard.node + " \"" + keyboard.name + "\"");
            return true;
        }
        cause = errno;
        SupportLog::write("kernel keyboard " + keyboard.node + " not opened: " +
                          (cause == EBUSY ? std::string("grab refused, another program holds it") : std::strerror(cause)));
    }
    errno = cause;
    return false;
}

void InputDeviceEvdev::unbind()
{
    if (fd < 0)
        return;
    close(fd);  // closing ends the grab
    fd = -1;
    SupportLog::write("kernel keyboard let go: " + bound.node);
}

bool InputDeviceEvdev::boundStillListed() const
{
    for (const EvdevKeyboard& keyboard : listEvdevKeyboards())
        if (keyboard.node == bound.node && keyboard.name == bound.name && keyboard.ids == bound.ids)
            return true;
    return false;
}

void InputDeviceEvdev::run()
{
    enum { DeviceSlot, WatchSlot, SlotCount };
    std::array<pollfd, SlotCount> slots{};
    for (;;) {
        slots[DeviceSlot] = {fd, POLLIN, 0};
        slots[WatchSlot] = {watch.fd(), POLLIN, 0};
        if (!thread.wait(slots, decoder.pauseTimeout()))
            break;
        if (!slots[DeviceSlot].revents && !slots[WatchSlot].revents)
            if (auto text = decoder.pause())
                deliver(*text);
        if (slots[DeviceSlot].revents & (POLLERR | POLLHUP | POLLNVAL))
            unbind();
        else if (slots[DeviceSlot].revents & POLLIN)
            readEvents();
        if ((slots[WatchSlot].revents & POLLIN) && watch.changed()) {
            if (fd >= 0 && !boundStillListed())
                unbind();
            if (fd < 0)
                bind();
        }
    }
    log(std::wstring(115, L'-'));
}

void InputDeviceEvdev::readEvents()
{
    input_event batch[EvdevEventReader::kBatch];
    const ssize_t count = events.read(fd, batch);
    if (count < 0 && errno == EAGAIN)
        return;
    // ENODEV (unplugged) or end of file: wait for udev to bring it back.
    if (count < 0) {
        unbind();
        return;
    }
    for (ssize_t i = 0; i < count; ++i) {
        const bool wasDropping = decoder.dropping();
        if (auto text = decoder.feed(batch[i]))
            deliver(*text);
        // The loss is over: ask which keys are down and which locks are lit now.
        if (wasDropping && !decoder.dropping()) {
            unsigned char keys[KEY_CNT / 8 + 1] = {};
            unsigned char leds[LED_CNT / 8 + 1] = {};
            const bool keysKnown = ioctl(fd, EVIOCGKEY(sizeof keys), keys) >= 0;
            const bool ledsKnown = ioctl(fd, EVIOCGLED(sizeof leds), leds) >= 0;
            decoder.resync(keysKnown ? keys : nullptr, ledsKnown ? leds : nullptr);
        }
    }
}
