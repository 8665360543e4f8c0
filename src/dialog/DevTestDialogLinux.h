#pragma once
// The device test window: lists, line by line, what every serial port and
// every keyboard-class X device sends, with the source's name.
//
// Only the thread that runs the window touches the toolkit. Reader threads
// queue their lines and ask the window's main loop to take them, so lines
// arrive in order and none is lost while the window is open.
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "input/InputDeviceComPortFactory.h"
#include "input/InputDeviceKeyboardFactory.h"

struct GtkApi;

class DevTestDialogLinux {
public:
    enum STRING_ID { Close, Clear, Copy, Title, Timeout };

    DevTestDialogLinux(const InputDeviceKeyboardFactory& keyboards, const InputDeviceComPortFactory& ports,
                       bool isRussian, int ioDataType);
    ~DevTestDialogLinux();

    // Listens to every source and runs the window until it is closed.
    void ShowDlg();
    std::string LoadString(STRING_ID id) const;
    bool IsRussian() const { return isRussian; }

    // Source name of a serial port number: "COM1", "ACM1", "USB1"...
    static std::wstring sourceNameFor(uint32_t port);
    // The two columns of one list line.
    static std::pair<std::string, std::string> formatLine(const std::wstring& sourceName,
                                                          const std::wstring& data, int ioDataType);

private:
    void ListenPorts();
    void DoListenPort(uint32_t port);
    void ListenKeyboardDevices();
    void DoListenKeyboardDevice(const std::wstring& name);
    void OnInput(const std::wstring& sourceName, const std::wstring& data);
    void StopListening();

    void InitList();
    void AddItemToList(const std::string& column0, const std::string& column1);
    static int takeQueuedLines(void* dialog);
    static void OnButtonCloseClicked(void* widget, void* dialog);
    static void OnButtonClearClicked(void* widget, void* dialog);
    static void OnButtonCopyClicked(void* widget, void* dialog);

    bool isRussian;
    InputDeviceKeyboardFactory keyboards;
    InputDeviceComPortFactory ports;
    std::map<std::wstring, std::shared_ptr<InputDevice>> sources;
    int ioDataType;

    const GtkApi* gtk = nullptr;
    void* mDlg = nullptr;
    void* mList = nullptr;
    void* mStore = nullptr;

    std::mutex queueLock;
    std::vector<std::pair<std::string, std::string>> queued;
    unsigned idleSource = 0;  // pending hand-over to the window's loop, 0 when none
};
