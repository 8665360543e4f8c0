#pragma once
// A second X client the tests drive the server with: types keys through
// XTest, manages input devices and windows, as a person or a system would.
#include <X11/Xlib.h>

#include <string>
#include <vector>

class XClient {
public:
    XClient();
    ~XClient();
    XClient(const XClient&) = delete;
    XClient& operator=(const XClient&) = delete;

    Display* display() const { return dpy; }

    // Presses and releases each key in turn (keysyms, so no key map is assumed).
    void type(const std::vector<KeySym>& keys);
    void typeText(const std::string& text);  // digits, letters, Return for '\n'
    void chord(KeySym modifier, KeySym key);
    // Presses (true) and releases key codes as given, on the core XTest
    // keyboard or on the XTest slave keyboard of that id.
    void keyCodes(const std::vector<std::pair<unsigned, bool>>& keys, int deviceId = -1);

    // Device ids by name, in the order the server lists them.
    std::vector<int> devicesNamed(const std::string& name);
    // A new master device pair comes with its own XTest slave keyboard,
    // "<name> XTEST keyboard", which X Input 1 listings show; its id is returned.
    int addMaster(const std::string& name);
    void removeMasters(const std::string& name);  // every master pair of that name
    // Types on one given XTest slave keyboard instead of the core one.
    void typeOn(int deviceId, const std::vector<KeySym>& keys);
    bool grabSucceeds(int deviceId);  // tries a grab from this client, releases it

    // The top-level window whose _NET_WM_NAME is title, or 0 after the deadline.
    Window waitForWindow(const std::string& title);
    // Its position on the screen and its size.
    void geometry(Window w, int& x, int& y, int& width, int& height);
    // A left click at a point of the screen, as a person's pointer would make it.
    void click(int x, int y);
    // Asks the window to close, as a window manager's close button does.
    void closeWindow(Window w);

    // A mapped window owned (by _NET_WM_PID) by the given process, with the focus.
    Window focusWindowOwnedBy(long pid);

private:
    Display* dpy;
};
