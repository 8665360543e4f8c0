#include "input/InputDeviceKeyboard.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>

#include "input/DeviceNodes.h"
#include "util/SupportLog.h"
#include "util/Logger.h"
#include "util/SymbolCodecs.h"
#include "util/XApi.h"

namespace {

constexpr uint32_t kKeyEventMask = XI_KeyPressMask | XI_KeyReleaseMask;

// A checked request: its error comes back here instead of going to Xlib.
bool succeeded(const XApi& x, xcb_connection_t* c, xcb_void_cookie_t cookie)
{
    XcbReply<xcb_generic_error_t> error(x.xcb_request_check(c, cookie));
    return !error;
}

}  // namespace

InputDeviceKeyboard::InputDeviceKeyboard(DataCallback callback, const DeviceSettings& settings)
    : InputDevice(std::move(callback)),
      settings(settings),
      decoder(settings),
      x(XApi::get())
{
}

InputDeviceKeyboard::~InputDeviceKeyboard()
{
    thread.stop();
    if (display) {
        if (!serverGone && !connectionLost()) {
            unbind();
            x->XCloseDisplay(display);
        } else {
            // Xlib would report the dead connection to the process-wide I/O
            // error handler, which ends the process; only the socket is closed.
            close(ConnectionNumber(display));
        }
    }
}

bool InputDeviceKeyboard::start()
{
    if (!x)
        return false;  // no X libraries: as when no server can be reached
    display = x->XOpenDisplay(nullptr);
    if (!display)
        return false;
    xcb = x->XGetXCBConnection(display);
    int opcode = 0, event = 0, error = 0;
    if (!x->XQueryExtension(display, "XInputExtension", &opcode, &event, &error))
        return false;
    int major = 2, minor = 0;
    x->XIQueryVersion(display, &major, &minor);
    root = DefaultRootWindow(display);
    if (!findAndBind() || !selectHierarchyEvents())
        return false;
    return thread.start([this] { ReadThread(); });
}

// Xwayland names its devices "xwayland-pointer:N", "xwayland-keyboard:N"...;
// newer ones also offer an XWAYLAND extension, Debian 12's does not.
bool InputDeviceKeyboard::serverShows(const std::string& deviceName)
{
    const XApi* x = XApi::get();
    Display* display = x ? x->XOpenDisplay(nullptr) : nullptr;
    if (!display)
        return false;
    int opcode = 0, event = 0, error = 0;
    bool shown = false, xwayland = x->XQueryExtension(display, "XWAYLAND", &opcode, &event, &error);
    if (!xwayland && x->XQueryExtension(display, "XInputExtension", &opcode, &event, &error)) {
        int count = 0;
        XDeviceInfo* devices = x->XListInputDevices(display, &count);
        for (int i = 0; i < count; ++i) {
            const std::string name = devices[i].name ? devices[i].name : "";
            xwayland = xwayland || name.rfind("xwayland-", 0) == 0;
            shown = shown || normalisedDeviceName(name) == deviceName;
        }
        if (devices)
            x->XFreeDeviceList(devices);
    }
    x->XCloseDisplay(display);
    return shown && !xwayland;
}

// Binds the last listed device of the configured name. The bound device stays
// bound while it exists: a second scanner of the same name, or a lingering
// node of one that re-enumerated, must not take its grab away. A name found
// nowhere leaves the source unbound.
bool InputDeviceKeyboard::findAndBind()
{
    int count = 0;
    XDeviceInfo* devices = x->XListInputDevices(display, &count);
    int found = -1;
    bool boundStillThere = false;
    for (int i = 0; i < count; ++i) {
        if (normalisedDeviceName(devices[i].name ? devices[i].name : "") != settings.keyboardDevice)
            continue;
        found = static_cast<int>(devices[i].id);
        boundStillThere = boundStillThere || found == deviceId;
    }
    if (devices)
        x->XFreeDeviceList(devices);
    if (boundStillThere)
        return true;
    unbind();
    return found >= 0 && bindDevice(found);
}

bool InputDeviceKeyboard::bindDevice(int id)
{
    x->XFlush(display);
    bool ok;
    if (!settings.testMode) {
        // Grabbed, the scanner's keystrokes reach no other window.
        auto cookie = x->xcb_input_xi_grab_device(xcb, static_cast<xcb_window_t>(root), XCB_CURRENT_TIME,
                                                  XCB_NONE, static_cast<xcb_input_device_id_t>(id),
                                                  XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC, 0, 1,
                                                  &kKeyEventMask);
        xcb_generic_error_t* error = nullptr;
        XcbReply<xcb_input_xi_grab_device_reply_t> reply(x->xcb_input_xi_grab_device_reply(xcb, cookie, &error));
        std::free(error);
        ok = reply && !error && reply->status == XCB_GRAB_STATUS_SUCCESS;
    } else {
        struct {
            xcb_input_event_mask_t head;
            uint32_t bits;
        } mask = {{static_cast<xcb_input_device_id_t>(id), 1}, kKeyEventMask};
        ok = succeeded(*x, xcb,
                       x->xcb_input_xi_select_events_checked(xcb, static_cast<xcb_window_t>(root), 1, &mask.head));
    }
    if (ok) {
        deviceId = id;
        decoder.resync(nullptr, nullptr);  // a device bound anew starts with no key held, no lock
    }
    SupportLog::write("X keyboard device " + std::to_string(id) + " \"" + settings.keyboardDevice + "\"" +
                      (ok ? " bound" : settings.testMode ? " not selected" : " not bound: grab refused"));
    return ok;
}

void InputDeviceKeyboard::unbind()
{
    if (deviceId < 0)
        return;
    // The device may be gone already; that error is expected and dropped.
    succeeded(*x, xcb, x->xcb_input_xi_ungrab_device_checked(xcb, XCB_CURRENT_TIME,
                                                             static_cast<xcb_input_device_id_t>(deviceId.load())));
    SupportLog::write("X keyboard device " + std::to_string(deviceId.load()) + " let go");
    deviceId = -1;
}

// Devices come and go (a scanner unplugged and plugged back): watch the list.
bool InputDeviceKeyboard::selectHierarchyEvents()
{
    struct {
        xcb_input_event_mask_t head;
        uint32_t bits;
    } mask = {{XCB_INPUT_DEVICE_ALL, 1}, XI_HierarchyChangedMask};
    return succeeded(*x, xcb,
                     x->xcb_input_xi_select_events_checked(xcb, static_cast<xcb_window_t>(root), 1, &mask.head));
}

// The server closing the connection shows as end of file on its socket. Xlib
// must never see that itself: it would call the process-wide I/O handler.
bool InputDeviceKeyboard::connectionLost()
{
    if (x->xcb_connection_has_error(xcb))
        return true;
    char byte;
    const ssize_t n = recv(ConnectionNumber(display), &byte, 1, MSG_PEEK | MSG_DONTWAIT);
    return n == 0 || (n < 0 && errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR);
}

// Sleeps until the server sends something, the pause that ends a code
// without a suffix passes (quiet) or the source is told to stop.
bool InputDeviceKeyboard::waitForX(bool& quiet)
{
    std::array<pollfd, 1> server{{{serverGone ? -1 : ConnectionNumber(display), POLLIN, 0}}};
    const bool awake = thread.wait(server, decoder.pauseTimeout());
    quiet = awake && !server[0].revents;
    return awake;
}

void InputDeviceKeyboard::ReadThread()
{
    while (!thread.stopping()) {
        if (!serverGone && connectionLost())
            serverGone = true;
        // Reading happens only here, after the socket was seen alive. The
        // round trips made while handling a key can draw later events into
        // XCB's queue, where the socket no longer shows them: look again
        // before going to sleep.
        if (!serverGone && x->XEventsQueued(display, QueuedAfterReading) > 0) {
            while (!serverGone && x->XEventsQueued(display, QueuedAlready) > 0)
                handleNextEvent();
            continue;
        }
        bool quiet = false;
        if (!waitForX(quiet))
            break;
        if (quiet)
            if (auto text = decoder.pause())
                deliver(*text);
    }
    log(std::wstring(115, L'-'));
}

void InputDeviceKeyboard::handleNextEvent()
{
    XEvent event;
    x->XNextEvent(display, &event);
    XGenericEventCookie* cookie = &event.xcookie;
    if (cookie->type != GenericEvent || !x->XGetEventData(display, cookie))
        return;
    if (cookie->evtype == XI_HierarchyChanged) {
        findAndBind();
    } else if (cookie->evtype == XI_KeyPress || cookie->evtype == XI_KeyRelease) {
        const auto* key = static_cast<const XIDeviceEvent*>(cookie->data);
        // Releases pass whatever has the focus, so no modifier stays held.
        const bool press = cookie->evtype == XI_KeyPress;
        if (key->deviceid == deviceId && (!press || !focusBelongsToOtherProcess()))
            handleKey(static_cast<unsigned>(key->detail) & 0xFF, press ? (key->flags & XIKeyRepeat ? 2 : 1) : 0);
    }
    x->XFreeEventData(display, cookie);
    if (x->xcb_connection_has_error(xcb))
        serverGone = true;
}

// Key strokes count only while the focus is in a window of this process, or
// where no owning process can be told (no focus, PointerRoot, no _NET_WM_PID).
bool InputDeviceKeyboard::focusBelongsToOtherProcess()
{
    XcbReply<xcb_get_input_focus_reply_t> focus(
        x->xcb_get_input_focus_reply(xcb, x->xcb_get_input_focus(xcb), nullptr));
    // PointerRoot (1) is not a window: asking for its tree would fail.
    if (!focus || focus->focus == XCB_NONE || focus->focus == XCB_INPUT_FOCUS_POINTER_ROOT)
        return false;
    // An atom lives as long as the server: once it exists it is asked for no more.
    if (pidAtom == XCB_NONE) {
        static const char kPidAtom[] = "_NET_WM_PID";
        XcbReply<xcb_intern_atom_reply_t> atom(
            x->xcb_intern_atom_reply(xcb, x->xcb_intern_atom(xcb, 1, sizeof kPidAtom - 1, kPidAtom), nullptr));
        if (!atom || atom->atom == XCB_NONE)
            return false;
        pidAtom = atom->atom;
    }
    for (xcb_window_t window = focus->focus; window != XCB_NONE;) {
        XcbReply<xcb_get_property_reply_t> pid(x->xcb_get_property_reply(
            xcb, x->xcb_get_property(xcb, 0, window, pidAtom, XCB_ATOM_CARDINAL, 0, 1), nullptr));
        if (!pid)
            return false;  // the window went away meanwhile
        if (pid->format == 32 && x->xcb_get_property_value_length(pid.get()) >= 4)
            return *static_cast<const uint32_t*>(x->xcb_get_property_value(pid.get())) !=
                   static_cast<uint32_t>(getpid());
        if (window == root)
            return false;
        XcbReply<xcb_query_tree_reply_t> tree(x->xcb_query_tree_reply(xcb, x->xcb_query_tree(xcb, window), nullptr));
        if (!tree)
            return false;
        window = tree->parent;
    }
    return false;
}

// X key codes are the kernel's plus 8 on every evdev or libinput server.
void InputDeviceKeyboard::handleKey(unsigned keycode, int value)
{
    if (keycode < 8)
        return;
    input_event event{};
    event.type = EV_KEY;
    event.code = static_cast<unsigned short>(keycode - 8);
    event.value = value;
    if (auto text = decoder.feed(event))
        deliver(*text);
}
