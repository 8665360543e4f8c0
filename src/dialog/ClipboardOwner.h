#pragma once
// Keeps a copied text pasteable by other X clients after the test window has
// closed: a small thread with its own X connection and window owns the
// CLIPBOARD selection and answers TARGETS, UTF8_STRING and STRING requests,
// until another client takes the selection or the library is unloaded.
#include <mutex>
#include <string>

#include "util/ReaderThread.h"

struct XApi;

class ClipboardOwner {
public:
    static ClipboardOwner& instance();
    // False when no X server can be reached.
    bool setText(const std::string& utf8);
    ~ClipboardOwner();

private:
    ClipboardOwner() = default;
    void serve(const XApi& x);
    void stop();

    std::mutex lock;
    std::string text;
    ReaderThread thread;
    void* connection = nullptr;  // xcb_connection_t*, used only by the thread once it runs
    uint32_t window = 0;
    uint32_t atoms[4] = {};  // CLIPBOARD, TARGETS, UTF8_STRING, STRING
};
