#pragma once
#include <atomic>
#include <cstdint>
#include <string>

#include "input/DeviceSettings.h"
#include "input/InputDevice.h"
#include "input/KeyDecoder.h"
#include "util/ReaderThread.h"

typedef struct _XDisplay Display;
typedef struct xcb_connection_t xcb_connection_t;
struct XApi;

// Reads a scanner that presents itself as a keyboard, through X Input 2: the
// device named in the settings is grabbed (or, in test mode, only listened
// to), its key presses and releases go to the key decoder the kernel reader
// uses too, so that both read a scanner alike whatever the session's layout.
//
// The display connection is used by one thread at a time: the reader while it
// runs, the destroying thread after the join. Requests that the server may
// refuse go through XCB and have their errors checked there, so no X error
// reaches Xlib's process-wide handler, whose default ends the process.
class InputDeviceKeyboard : public InputDevice {
public:
    InputDeviceKeyboard(DataCallback callback, const DeviceSettings& settings);
    ~InputDeviceKeyboard() override;

    // Connects, binds the named device and starts the reader.
    bool start();
    // Whether the default display's server shows the named device itself: it
    // is reachable, is not Xwayland (which shows its clients virtual keyboards
    // only) and lists a device of that name.
    static bool serverShows(const std::string& deviceName);
    // The X Input id of the bound device; -1 while none of that name exists.
    long boundDeviceId() const { return deviceId; }

private:
    void ReadThread();
    bool findAndBind();
    bool bindDevice(int id);
    void unbind();
    bool selectHierarchyEvents();
    void handleNextEvent();
    void handleKey(unsigned keycode, int value);
    bool focusBelongsToOtherProcess();
    bool connectionLost();
    bool waitForX(bool& quiet);

    const DeviceSettings settings;
    KeyDecoder decoder;  // used by the reader only
    const XApi* const x;  // null without the X libraries
    Display* display = nullptr;
    xcb_connection_t* xcb = nullptr;  // the display's own, for the requests whose errors are checked
    unsigned long root = 0;
    uint32_t pidAtom = 0;  // _NET_WM_PID, 0 until the server has it
    std::atomic<long> deviceId{-1};
    bool serverGone = false;
    ReaderThread thread;
};
