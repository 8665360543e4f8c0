#include "MockInput.h"

#include <poll.h>
#include <sys/stat.h>
#include <umockdev.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include "HangTimeout.h"
#include "input/KeyCases.h"

namespace {

std::string syspath(const MockKeyboard& k)
{
    const std::string n = std::to_string(k.event);
    if (k.usbIds.empty())
        return "/devices/platform/i8042/serio0/input/input" + n + "/event" + n;
    return "/devices/pci0000:00/0000:00:14.0/usb1/1-" + n + "/1-" + n + ":1.0/input/input" + n + "/event" + n;
}

std::string parentOf(const std::string& path) { return path.substr(0, path.rfind('/')); }

// The description umockdev-record would write: the event node, then its input
// device, then (for a USB one) the USB device.
std::string description(const MockKeyboard& k)
{
    const std::string n = std::to_string(k.event);
    const std::string node = syspath(k);
    const std::string vendor = k.usbIds.empty() ? "0001" : k.usbIds.substr(0, 4);
    const std::string product = k.usbIds.empty() ? "0001" : k.usbIds.substr(5, 4);
    std::string text = "P: " + node + "\nN: input/event" + n + "\nE: DEVNAME=/dev/input/event" + n +
                       "\nE: SUBSYSTEM=input\nE: ID_INPUT=1\nE: ID_INPUT_KEY=1\nE: ID_INPUT_KEYBOARD=1\n"
                       "A: dev=13:" + std::to_string(64 + k.event) + "\n\n";
    text += "P: " + parentOf(node) + "\nE: SUBSYSTEM=input\nE: NAME=\"" + k.name + "\"\nA: name=" + k.name +
            "\nA: id/bustype=" + (k.usbIds.empty() ? "0011" : "0003") + "\nA: id/vendor=" + vendor +
            "\nA: id/product=" + product + "\n\n";
    if (!k.usbIds.empty()) {
        const std::string usb = parentOf(parentOf(parentOf(parentOf(node))));
        text += "P: " + usb + "\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\nA: idVendor=" + vendor +
                "\nA: idProduct=" + product + "\n";
    }
    return text;
}

}  // namespace

MockKeyboard honeywellScanner(int event)
{
    return {event, "Honeywell Imaging & Mobility 1950g", "0c2e:0b61"};
}

MockKeyboard atKeyboard(int event) { return {event, "AT Translated Set 2 keyboard", ""}; }

std::string nodePath(const MockKeyboard& keyboard) { return "/dev/input/event" + std::to_string(keyboard.event); }

input_event keyEvent(int code, int value)
{
    input_event e{};
    e.type = EV_KEY;
    e.code = static_cast<unsigned short>(code);
    e.value = value;
    return e;
}

input_event synEvent(int code)
{
    input_event e{};
    e.type = EV_SYN;
    e.code = static_cast<unsigned short>(code);
    return e;
}

struct MockInput::HandlerLoop {
    GMainContext* context = g_main_context_new();
    GMainLoop* loop = g_main_loop_new(context, FALSE);
    std::thread thread;

    HandlerLoop()
    {
        thread = std::thread([this] {
            g_main_context_push_thread_default(context);
            g_main_loop_run(loop);
            g_main_context_pop_thread_default(context);
        });
        while (!g_main_loop_is_running(loop))
            std::this_thread::yield();
    }
    ~HandlerLoop()
    {
        g_main_loop_quit(loop);
        thread.join();
        g_main_loop_unref(loop);
        g_main_context_unref(context);
    }
};

MockInput::MockInput() : testbed(umockdev_testbed_new())
{
    if (!umockdev_in_mock_environment())
        throw std::runtime_error("run this program under umockdev-wrapper");
    // Until the testbed has a /dev of its own, the machine's shows through.
    gchar* root = umockdev_testbed_get_root_dir(testbed);
    const std::string dev = std::string(root) + "/dev";
    g_free(root);
    if (mkdir(dev.c_str(), 0755) != 0 && errno != EEXIST)
        throw std::runtime_error("cannot make the testbed's /dev");
}

MockInput::~MockInput()
{
    handlers.reset();
    g_object_unref(testbed);
}

namespace {

gboolean refuseGrab(UMockdevIoctlBase*, UMockdevIoctlClient* client, gpointer)
{
    if (umockdev_ioctl_client_get_request(client) != EVIOCGRAB)
        return FALSE;
    umockdev_ioctl_client_complete(client, -1, EBUSY);
    return TRUE;
}

// Answers EVIOCGKEY and EVIOCGLED from the bitmaps of a KeyState; anything
// else is left to the testbed.
gboolean reportState(UMockdevIoctlBase*, UMockdevIoctlClient* client, gpointer data)
{
    const auto* state = static_cast<const MockInput::KeyState*>(data);
    const unsigned long request = umockdev_ioctl_client_get_request(client);
    const std::vector<unsigned char>* bits = nullptr;
    if (_IOC_TYPE(request) == _IOC_TYPE(EVIOCGKEY(0)) && _IOC_NR(request) == _IOC_NR(EVIOCGKEY(0)))
        bits = &state->keysDown;
    else if (_IOC_TYPE(request) == _IOC_TYPE(EVIOCGLED(0)) && _IOC_NR(request) == _IOC_NR(EVIOCGLED(0)))
        bits = &state->ledsLit;
    if (!bits)
        return FALSE;
    const size_t size = _IOC_SIZE(request);
    GError* error = nullptr;
    UMockdevIoctlData* buffer = umockdev_ioctl_data_resolve(umockdev_ioctl_client_get_arg(client), 0, size, &error);
    if (!buffer) {
        g_clear_error(&error);
        umockdev_ioctl_client_complete(client, -1, EFAULT);
        return TRUE;
    }
    std::fill(buffer->data, buffer->data + size, 0);
    std::copy(bits->begin(), bits->begin() + std::min(size, bits->size()), buffer->data);
    umockdev_ioctl_client_complete(client, static_cast<glong>(size), 0);
    g_object_unref(buffer);
    return TRUE;
}

}  // namespace

void MockInput::attachIoctlHandler(const MockKeyboard& keyboard, GCallback handler, void* data)
{
    if (!handlers)
        handlers = std::make_unique<HandlerLoop>();
    // The handler is attached from the loop's thread: umockdev serves it on
    // the main context in force there.
    struct Attach {
        UMockdevTestbed* testbed;
        std::string node;
        GCallback handler;
        void* data;
        bool done = false;
        bool ok = false;
    } attach{testbed, nodePath(keyboard), handler, data};
    g_main_context_invoke(handlers->context, [](gpointer data) -> gboolean {
        auto* a = static_cast<Attach*>(data);
        UMockdevIoctlBase* handler = umockdev_ioctl_base_new();
        g_signal_connect(handler, "handle-ioctl", a->handler, a->data);
        a->ok = umockdev_testbed_attach_ioctl(a->testbed, a->node.c_str(), handler, nullptr);
        g_object_unref(handler);
        __atomic_store_n(&a->done, true, __ATOMIC_RELEASE);
        return G_SOURCE_REMOVE;
    }, &attach);
    while (!__atomic_load_n(&attach.done, __ATOMIC_ACQUIRE))
        std::this_thread::yield();
    if (!attach.ok)
        throw std::runtime_error("umockdev would not take the ioctl handler");
}

void MockInput::holdElsewhere(const MockKeyboard& keyboard)
{
    attachIoctlHandler(keyboard, G_CALLBACK(refuseGrab), nullptr);
}

void MockInput::reportKeyState(const MockKeyboard& keyboard, const std::vector<int>& keysDown,
                               const std::vector<int>& ledsLit)
{
    auto state = std::make_unique<KeyState>();
    state->keysDown.assign(KEY_CNT / 8 + 1, 0);
    state->ledsLit.assign(LED_CNT / 8 + 1, 0);
    for (int key : keysDown)
        state->keysDown[key / 8] |= static_cast<unsigned char>(1 << (key % 8));
    for (int led : ledsLit)
        state->ledsLit[led / 8] |= static_cast<unsigned char>(1 << (led % 8));
    attachIoctlHandler(keyboard, G_CALLBACK(reportState), state.get());
    states.push_back(std::move(state));
}

void MockInput::plug(const MockKeyboard& keyboard)
{
    GError* error = nullptr;
    if (!umockdev_testbed_add_from_string(testbed, description(keyboard).c_str(), &error)) {
        const std::string message = error ? error->message : "?";
        g_clear_error(&error);
        throw std::runtime_error("umockdev: " + message);
    }
    // umockdev announces a device while it is still making it, so a reader
    // woken at once on a busy machine can find it half made and wait for
    // news forever; udev announces a device once it is whole: so again here.
    umockdev_testbed_uevent(testbed, ("/sys" + syspath(keyboard)).c_str(), "add");
}

void MockInput::unplug(const MockKeyboard& keyboard)
{
    const std::string node = "/sys" + syspath(keyboard);
    umockdev_testbed_uevent(testbed, node.c_str(), "remove");
    umockdev_testbed_remove_device(testbed, node.c_str());
}

void MockInput::nodesForRootOnly()
{
    gchar* root = umockdev_testbed_get_root_dir(testbed);
    const std::string top = root;
    g_free(root);
    const std::string command = "chmod -R a+rwX '" + top + "' && find '" + top +
                                "/dev/input' -name 'event*' -exec chmod 0600 {} +";
    if (std::system(command.c_str()) != 0)
        throw std::runtime_error("could not set the testbed's permissions");
}

void MockInput::send(const MockKeyboard& keyboard, const std::vector<input_event>& events)
{
    const int fd = umockdev_testbed_get_dev_fd(testbed, nodePath(keyboard).c_str());
    if (fd < 0)
        throw std::runtime_error("no node " + nodePath(keyboard));
    const char* bytes = reinterpret_cast<const char*>(events.data());
    size_t left = events.size() * sizeof(input_event);
    while (left > 0) {
        const ssize_t n = write(fd, bytes, left);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0 && errno == EAGAIN) {
            // The reader has not caught up yet: wait for room.
            pollfd room = {fd, POLLOUT, 0};
            if (poll(&room, 1, static_cast<int>(std::chrono::milliseconds(kHangTimeout).count())) == 0)
                throw std::runtime_error("the reader of " + nodePath(keyboard) + " stopped taking events");
            continue;
        }
        if (n <= 0)
            throw std::runtime_error("write to the node's testbed side failed");
        bytes += n;
        left -= static_cast<size_t>(n);
    }
}

void MockInput::type(const MockKeyboard& keyboard, const std::vector<int>& keys)
{
    std::vector<input_event> events;
    for (int key : keys) {
        const int code = key < 0 ? -key : key;
        if (key < 0)
            events.insert(events.end(), {keyEvent(KEY_LEFTSHIFT, 1), synEvent()});
        events.insert(events.end(), {keyEvent(code, 1), synEvent(), keyEvent(code, 0), synEvent()});
        if (key < 0)
            events.insert(events.end(), {keyEvent(KEY_LEFTSHIFT, 0), synEvent()});
    }
    send(keyboard, events);
}

std::vector<int> MockInput::keysOf(const std::string& text)
{
    std::vector<int> keys;
    for (char c : text) {
        bool shift = false;
        const int code = usKeyFor(c, shift);
        if (!code)
            throw std::runtime_error(std::string("no US key types ") + c);
        keys.push_back(shift ? -code : code);
    }
    return keys;
}
