#pragma once
// The plain host's device test window on a running X server, with one scanner
// plugged in: the scan is sent once the window is up, and its first row is
// copied as a person would (clicks where Debian's GTK 2 theme puts the row and
// the buttons), then the window is closed. The host must report a normal return.
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <thread>

#include "ChildProcess.h"
#include "TestUtil.h"
#include "XClient.h"

// What Copy took from the first row; empty when the row never came.
inline std::string copyFirstScanInWindow(XClient& x, const std::function<void()>& scan)
{
    ChildProcess host({DEVICE_TEST_HOST}, {"LSAN_OPTIONS=suppressions=" RAVLIN_TEST_DATA "/dialog/lsan.supp"});
    const Window window = x.waitForWindow("Тест устройства");
    EXPECT_NE(window, 0u) << "the window did not appear";
    if (!window)
        return "";
    int wx, wy, width, height;
    x.geometry(window, wx, wy, width, height);
    scan();
    const int firstRowY = 42, buttonsFromRight = 57, copyY = 94, closeY = 20;
    std::string copied;
    // Until the row is there (the scan crosses the reader thread and the
    // window's idle handler first).
    for (int attempt = 0; attempt < 50 && copied.empty(); ++attempt) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        x.click(wx + 150, wy + firstRowY);
        x.click(wx + width - buttonsFromRight, wy + copyY);
        copied = runCommand("timeout 5 xclip -o -selection clipboard 2>/dev/null");
    }
    x.click(wx + width - buttonsFromRight, wy + closeY);
    EXPECT_EQ(host.readLine().rfind("DeviceTest returned 1 result 1", 0), 0u);
    host.closeInput();
    EXPECT_EQ(host.wait(), 0);
    return copied;
}
