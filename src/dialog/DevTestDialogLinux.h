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

#include "abi/DeviceCodes.h"

#include "input/DeviceSettings.h"
#include "input/InputDeviceFactory.h"

struct GtkApi;

class DevTestDialogLinux {
public:
    enum STRING_ID { Close, Clear, Copy, Title, Timeout, Busy };

    DevTestDialogLinux(const DeviceSettings& keyboards, const DeviceSettings& ports, bool isRussian,
                       OutputDataType ioDataType);
    ~DevTestDialogLinux();

    // Listens to every source and runs the window until it is closed.
    void ShowDlg();
    std::string LoadString(STRING_ID id) const;
    bool IsRussian() const { return isRussian; }

    // The two columns of one list line.
    static std::pair<std::string, std::string> formatLine(const std::wstring& sourceName,
                                                          const std::wstring& data, OutputDataType ioDataType);
    // A HID POS scanner's source column names the code's symbology (AIM
    // identifier) beside the port, so that Copy still takes the code alone.
    static std::wstring scannerSourceName(const std::wstring& port, const std::string& symbology);

private:
    void ListenPorts();
    void DoListenPort(uint32_t port);
    void ListenKeyboardDevices();
    void DoListenKeyboardDevice(const std::string& deviceName);
    void Listen(const std::wstring& name, const InputDeviceFactory& factory, const DeviceSettings& settings);
    void OnInput(const std::wstring& sourceName, const std::wstring& data);
    void queueLine(std::pair<std::string, std::string> line);
    void StopListening();

    void BuildWindow();
    void InitList();
    void AddItemToList(const std::string& column0, const std::string& column1);
    static int takeQueuedLines(void* dialog);
    static void OnButtonCloseClicked(void* widget, void* dialog);
    static void OnButtonClearClicked(void* widget, void* dialog);
    static void OnButtonCopyClicked(void* widget, void* dialog);

    const bool isRussian;
    const DeviceSettings keyboards;
    const DeviceSettings ports;
    const OutputDataType ioDataType;
    std::map<std::wstring, std::unique_ptr<InputDevice>> sources;

    const GtkApi* gtk = nullptr;
    void* mDlg = nullptr;
    void* mList = nullptr;
    void* mStore = nullptr;

    std::mutex queueLock;
    std::vector<std::pair<std::string, std::string>> queued;
    unsigned idleSource = 0;  // pending hand-over to the window's loop, 0 when none
};
