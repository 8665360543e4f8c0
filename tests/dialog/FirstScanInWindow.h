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
#include "HangTimeout.h"
#include "TestUtil.h"
#include "XClient.h"

inline std::string clipboardText()
{
    return runCommand("timeout 60 xclip -o -selection clipboard 2>/dev/null");
}

// Selects the row and clicks Copy until the clipboard holds something: the
// row is there only once the scan has crossed the reader thread and the
// window's idle handler. Before each try the scan is offered again if asked:
// a serial line flushes what came before the window opened it. What the
// clipboard then holds; empty if it never came.
inline std::string copyRowOnceListed(XClient& x, int rowX, int rowY, int copyX, int copyY,
                                     const std::function<void()>& offer = {})
{
    std::string copied;
    waitUntil([&] {
        if (offer)
            offer();
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        x.click(rowX, rowY);
        x.click(copyX, copyY);
        copied = clipboardText();
        return !copied.empty();
    });
    return copied;
}

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
    const std::string copied = copyRowOnceListed(x, wx + 150, wy + firstRowY, wx + width - buttonsFromRight, wy + copyY);
    x.click(wx + width - buttonsFromRight, wy + closeY);
    EXPECT_EQ(host.readLine().rfind("DeviceTest returned 1 result 1", 0), 0u);
    host.closeInput();
    EXPECT_EQ(host.wait(), 0);
    return copied;
}
