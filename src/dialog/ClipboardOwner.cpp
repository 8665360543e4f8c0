#include "dialog/ClipboardOwner.h"

#include <cstdlib>
#include <cstring>

#include "util/XApi.h"

namespace {

enum { Clipboard, Targets, Utf8String, String };

xcb_atom_t intern(const XApi& x, xcb_connection_t* c, const char* name)
{
    const XcbReply<xcb_intern_atom_reply_t> reply(
        x.xcb_intern_atom_reply(c, x.xcb_intern_atom(c, 0, static_cast<uint16_t>(std::strlen(name)), name), nullptr));
    return reply ? reply->atom : XCB_NONE;
}

}  // namespace

ClipboardOwner& ClipboardOwner::instance()
{
    // The X libraries first: statics go in the reverse order they were made,
    // and the owner disconnects through them when the add-in is unloaded.
    XApi::get();
    static ClipboardOwner owner;
    return owner;
}

ClipboardOwner::~ClipboardOwner()
{
    stop();
}

void ClipboardOwner::stop()
{
    thread.stop();
    if (connection)
        XApi::get()->xcb_disconnect(static_cast<xcb_connection_t*>(connection));
    connection = nullptr;
}

bool ClipboardOwner::setText(const std::string& utf8)
{
    // A fresh owner each time: the previous one may have lost the selection
    // or its server meanwhile.
    stop();
    const XApi* x = XApi::get();
    if (!x)
        return false;  // no X libraries: as when no server can be reached
    std::lock_guard<std::mutex> guard(lock);
    text = utf8;
    auto* c = x->xcb_connect(nullptr, nullptr);
    connection = c;
    if (x->xcb_connection_has_error(c))
        return false;
    const xcb_screen_t* screen = x->xcb_setup_roots_iterator(x->xcb_get_setup(c)).data;
    window = x->xcb_generate_id(c);
    x->xcb_create_window(c, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, 1, 1, 0,
                         XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    const char* names[] = {"CLIPBOARD", "TARGETS", "UTF8_STRING", "STRING"};
    for (int i = 0; i < 4; ++i)
        atoms[i] = intern(*x, c, names[i]);
    x->xcb_set_selection_owner(c, window, atoms[Clipboard], XCB_CURRENT_TIME);
    const XcbReply<xcb_get_selection_owner_reply_t> owner(
        x->xcb_get_selection_owner_reply(c, x->xcb_get_selection_owner(c, atoms[Clipboard]), nullptr));
    return owner && owner->owner == window && thread.start([this, x] { serve(*x); });
}

void ClipboardOwner::serve(const XApi& x)
{
    auto* c = static_cast<xcb_connection_t*>(connection);
    std::array<pollfd, 1> server{{{x.xcb_get_file_descriptor(c), POLLIN, 0}}};
    while (!x.xcb_connection_has_error(c)) {
        xcb_generic_event_t* event = x.xcb_poll_for_event(c);
        if (!event) {
            if (!thread.wait(server, -1))
                break;
            continue;
        }
        const uint8_t type = event->response_type & 0x7F;
        if (type == XCB_SELECTION_CLEAR) {
            std::free(event);
            break;  // another client owns the clipboard now
        }
        if (type == XCB_SELECTION_REQUEST) {
            const auto* request = reinterpret_cast<xcb_selection_request_event_t*>(event);
            xcb_selection_notify_event_t notify{};
            notify.response_type = XCB_SELECTION_NOTIFY;
            notify.time = request->time;
            notify.requestor = request->requestor;
            notify.selection = request->selection;
            notify.target = request->target;
            notify.property = request->property ? request->property : request->target;
            if (request->target == atoms[Targets]) {
                const xcb_atom_t offered[] = {atoms[Targets], atoms[Utf8String], atoms[String]};
                x.xcb_change_property(c, XCB_PROP_MODE_REPLACE, request->requestor, notify.property,
                                      XCB_ATOM_ATOM, 32, 3, offered);
            } else if (request->target == atoms[Utf8String] || request->target == atoms[String]) {
                std::lock_guard<std::mutex> guard(lock);
                x.xcb_change_property(c, XCB_PROP_MODE_REPLACE, request->requestor, notify.property,
                                      request->target, 8, static_cast<uint32_t>(text.size()), text.data());
            } else {
                notify.property = XCB_NONE;  // a form not offered
            }
            x.xcb_send_event(c, 0, request->requestor, XCB_EVENT_MASK_NO_EVENT,
                             reinterpret_cast<const char*>(&notify));
            x.xcb_flush(c);
        }
        std::free(event);
    }
}
