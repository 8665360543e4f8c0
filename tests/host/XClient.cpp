#include "XClient.h"

#include <X11/Xatom.h>
#include <X11/extensions/XInput.h>
#include <X11/extensions/XInput2.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

#include <chrono>
#include <stdexcept>
#include <thread>

#include "HangTimeout.h"

XClient::XClient() : dpy(XOpenDisplay(nullptr))
{
    if (!dpy)
        throw std::runtime_error("cannot connect to the test X server");
    int major = 2, minor = 2;
    XIQueryVersion(dpy, &major, &minor);
}

XClient::~XClient()
{
    XCloseDisplay(dpy);
}

void XClient::type(const std::vector<KeySym>& keys)
{
    for (KeySym k : keys) {
        const KeyCode code = XKeysymToKeycode(dpy, k);
        XTestFakeKeyEvent(dpy, code, True, CurrentTime);
        XTestFakeKeyEvent(dpy, code, False, CurrentTime);
    }
    XSync(dpy, False);
}

void XClient::typeText(const std::string& text)
{
    std::vector<KeySym> keys;
    for (char c : text)
        keys.push_back(c == '\n' ? XK_Return : static_cast<KeySym>(static_cast<unsigned char>(c)));
    type(keys);
}

void XClient::chord(KeySym modifier, KeySym key)
{
    const KeyCode m = XKeysymToKeycode(dpy, modifier);
    const KeyCode k = XKeysymToKeycode(dpy, key);
    XTestFakeKeyEvent(dpy, m, True, CurrentTime);
    XTestFakeKeyEvent(dpy, k, True, CurrentTime);
    XTestFakeKeyEvent(dpy, k, False, CurrentTime);
    XTestFakeKeyEvent(dpy, m, False, CurrentTime);
    XSync(dpy, False);
}

void XClient::keyCodes(const std::vector<std::pair<unsigned, bool>>& keys, int deviceId)
{
    XDevice* device = nullptr;
    if (deviceId >= 0 && !(device = XOpenDevice(dpy, static_cast<XID>(deviceId))))
        throw std::runtime_error("cannot open the XTest device");
    for (const auto& [code, press] : keys) {
        if (device)
            XTestFakeDeviceKeyEvent(dpy, device, code, press, nullptr, 0, CurrentTime);
        else
            XTestFakeKeyEvent(dpy, code, press, CurrentTime);
    }
    XSync(dpy, False);
    if (device)
        XCloseDevice(dpy, device);
}

std::vector<int> XClient::devicesNamed(const std::string& name)
{
    std::vector<int> ids;
    int count = 0;
    XDeviceInfo* list = XListInputDevices(dpy, &count);
    for (int i = 0; i < count; ++i)
        if (list[i].name && name == list[i].name)
            ids.push_back(static_cast<int>(list[i].id));
    if (list)
        XFreeDeviceList(list);
    return ids;
}

int XClient::addMaster(const std::string& name)
{
    XIAddMasterInfo add{};
    add.type = XIAddMaster;
    add.name = const_cast<char*>(name.c_str());
    add.send_core = True;
    add.enable = True;
    XIChangeHierarchy(dpy, reinterpret_cast<XIAnyHierarchyChangeInfo*>(&add), 1);
    XSync(dpy, False);
    const auto ids = devicesNamed(name + " XTEST keyboard");
    return ids.empty() ? -1 : ids.back();
}

void XClient::removeMasters(const std::string& name)
{
    int count = 0;
    XIDeviceInfo* devices = XIQueryDevice(dpy, XIAllDevices, &count);
    for (int i = 0; i < count; ++i) {
        if (devices[i].use != XIMasterKeyboard || name + " keyboard" != devices[i].name)
            continue;
        XIRemoveMasterInfo remove{};
        remove.type = XIRemoveMaster;
        remove.deviceid = devices[i].deviceid;
        remove.return_mode = XIFloating;
        XIChangeHierarchy(dpy, reinterpret_cast<XIAnyHierarchyChangeInfo*>(&remove), 1);
    }
    XIFreeDeviceInfo(devices);
    XSync(dpy, False);
}

void XClient::typeOn(int deviceId, const std::vector<KeySym>& keys)
{
    std::vector<std::pair<unsigned, bool>> codes;
    for (KeySym k : keys) {
        const KeyCode code = XKeysymToKeycode(dpy, k);
        codes.insert(codes.end(), {{code, true}, {code, false}});
    }
    keyCodes(codes, deviceId);
}

bool XClient::grabSucceeds(int deviceId)
{
    unsigned char bits[1] = {};
    XIEventMask mask{deviceId, sizeof bits, bits};
    const Status s = XIGrabDevice(dpy, deviceId, DefaultRootWindow(dpy), CurrentTime, None,
                                  GrabModeAsync, GrabModeAsync, False, &mask);
    if (s == GrabSuccess)
        XIUngrabDevice(dpy, deviceId, CurrentTime);
    XSync(dpy, False);
    return s == GrabSuccess;
}

Window XClient::focusWindowOwnedBy(long pid)
{
    const Window w = XCreateSimpleWindow(dpy, DefaultRootWindow(dpy), 0, 0, 100, 100, 0, 0, 0);
    const Atom pidAtom = XInternAtom(dpy, "_NET_WM_PID", False);
    XChangeProperty(dpy, w, pidAtom, XA_CARDINAL, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(&pid), 1);
    XMapWindow(dpy, w);
    XSync(dpy, False);
    XSetInputFocus(dpy, w, RevertToParent, CurrentTime);
    XSync(dpy, False);
    return w;
}

namespace {

std::string windowName(Display* dpy, Window w)
{
    const Atom utf8 = XInternAtom(dpy, "UTF8_STRING", False);
    const Atom netName = XInternAtom(dpy, "_NET_WM_NAME", False);
    Atom type;
    int format;
    unsigned long count, after;
    unsigned char* data = nullptr;
    std::string name;
    if (XGetWindowProperty(dpy, w, netName, 0, 1024, False, utf8, &type, &format, &count, &after, &data) ==
            Success && data) {
        name.assign(reinterpret_cast<char*>(data), count);
        XFree(data);
    }
    return name;
}

}  // namespace

Window XClient::waitForWindow(const std::string& title)
{
    const auto deadline = std::chrono::steady_clock::now() + kHangTimeout;
    while (std::chrono::steady_clock::now() < deadline) {
        Window root, parent, *children = nullptr;
        unsigned count = 0;
        Window found = 0;
        if (XQueryTree(dpy, DefaultRootWindow(dpy), &root, &parent, &children, &count)) {
            for (unsigned i = 0; i < count && !found; ++i) {
                XWindowAttributes a;
                if (XGetWindowAttributes(dpy, children[i], &a) && a.map_state == IsViewable &&
                    windowName(dpy, children[i]) == title)
                    found = children[i];
            }
            XFree(children);
        }
        if (found)
            return found;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return 0;
}

void XClient::closeWindow(Window w)
{
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = w;
    event.xclient.message_type = XInternAtom(dpy, "WM_PROTOCOLS", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(XInternAtom(dpy, "WM_DELETE_WINDOW", False));
    event.xclient.data.l[1] = CurrentTime;
    XSendEvent(dpy, w, False, NoEventMask, &event);
    XFlush(dpy);
}

void XClient::geometry(Window w, int& x, int& y, int& width, int& height)
{
    XWindowAttributes a;
    XGetWindowAttributes(dpy, w, &a);
    Window child;
    XTranslateCoordinates(dpy, w, DefaultRootWindow(dpy), 0, 0, &x, &y, &child);
    width = a.width;
    height = a.height;
}

void XClient::click(int x, int y)
{
    XTestFakeMotionEvent(dpy, -1, x, y, CurrentTime);
    XTestFakeButtonEvent(dpy, 1, True, CurrentTime);
    XTestFakeButtonEvent(dpy, 1, False, CurrentTime);
    XSync(dpy, False);
}
