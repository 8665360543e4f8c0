#pragma once
// The X client functions the keyboard reader, the keyboard list and the
// clipboard owner need, resolved at run time: loading the add-in never
// requires the X libraries, so a serial-only kiosk or a Wayland session
// without them still scans. Without them every X feature behaves as it does
// when no X server can be reached. The headers still give types, constants
// and macros (ConnectionNumber, DefaultRootWindow, the XI mask bits).
#include <X11/XKBlib.h>
#include <X11/Xlib-xcb.h>
#include <X11/Xlib.h>
#include <X11/extensions/XInput.h>
#include <X11/extensions/XInput2.h>
#include <xcb/xcb.h>
#include <xcb/xinput.h>

#include <cstdlib>
#include <memory>

#include "util/RuntimeLibrary.h"

#define RAVLIN_X_FUNCTIONS(X)                                                                                \
    X(Display*, XOpenDisplay, (const char*))                                                                 \
    X(int, XCloseDisplay, (Display*))                                                                        \
    X(Bool, XQueryExtension, (Display*, const char*, int*, int*, int*))                                      \
    X(int, XFlush, (Display*))                                                                               \
    X(int, XEventsQueued, (Display*, int))                                                                   \
    X(int, XNextEvent, (Display*, XEvent*))                                                                  \
    X(Bool, XGetEventData, (Display*, XGenericEventCookie*))                                                 \
    X(void, XFreeEventData, (Display*, XGenericEventCookie*))                                                \
    X(xcb_connection_t*, XGetXCBConnection, (Display*))                                                      \
    X(XDeviceInfo*, XListInputDevices, (Display*, int*))                                                     \
    X(void, XFreeDeviceList, (XDeviceInfo*))                                                                 \
    X(Status, XIQueryVersion, (Display*, int*, int*))                                                        \
    X(xcb_connection_t*, xcb_connect, (const char*, int*))                                                   \
    X(void, xcb_disconnect, (xcb_connection_t*))                                                             \
    X(int, xcb_connection_has_error, (xcb_connection_t*))                                                    \
    X(int, xcb_get_file_descriptor, (xcb_connection_t*))                                                     \
    X(int, xcb_flush, (xcb_connection_t*))                                                                   \
    X(uint32_t, xcb_generate_id, (xcb_connection_t*))                                                        \
    X(const xcb_setup_t*, xcb_get_setup, (xcb_connection_t*))                                                \
    X(xcb_screen_iterator_t, xcb_setup_roots_iterator, (const xcb_setup_t*))                                 \
    X(xcb_generic_event_t*, xcb_poll_for_event, (xcb_connection_t*))                                         \
    X(xcb_generic_error_t*, xcb_request_check, (xcb_connection_t*, xcb_void_cookie_t))                       \
    X(xcb_void_cookie_t, xcb_create_window,                                                                  \
      (xcb_connection_t*, uint8_t, xcb_window_t, xcb_window_t, int16_t, int16_t, uint16_t, uint16_t,         \
       uint16_t, uint16_t, xcb_visualid_t, uint32_t, const void*))                                           \
    X(xcb_void_cookie_t, xcb_change_property,                                                                \
      (xcb_connection_t*, uint8_t, xcb_window_t, xcb_atom_t, xcb_atom_t, uint8_t, uint32_t, const void*))    \
    X(xcb_void_cookie_t, xcb_send_event, (xcb_connection_t*, uint8_t, xcb_window_t, uint32_t, const char*))  \
    X(xcb_void_cookie_t, xcb_set_selection_owner, (xcb_connection_t*, xcb_window_t, xcb_atom_t, xcb_timestamp_t)) \
    X(xcb_get_selection_owner_cookie_t, xcb_get_selection_owner, (xcb_connection_t*, xcb_atom_t))            \
    X(xcb_get_selection_owner_reply_t*, xcb_get_selection_owner_reply,                                       \
      (xcb_connection_t*, xcb_get_selection_owner_cookie_t, xcb_generic_error_t**))                          \
    X(xcb_intern_atom_cookie_t, xcb_intern_atom, (xcb_connection_t*, uint8_t, uint16_t, const char*))        \
    X(xcb_intern_atom_reply_t*, xcb_intern_atom_reply,                                                       \
      (xcb_connection_t*, xcb_intern_atom_cookie_t, xcb_generic_error_t**))                                  \
    X(xcb_get_input_focus_cookie_t, xcb_get_input_focus, (xcb_connection_t*))                                \
    X(xcb_get_input_focus_reply_t*, xcb_get_input_focus_reply,                                               \
      (xcb_connection_t*, xcb_get_input_focus_cookie_t, xcb_generic_error_t**))                              \
    X(xcb_get_property_cookie_t, xcb_get_property,                                                           \
      (xcb_connection_t*, uint8_t, xcb_window_t, xcb_atom_t, xcb_atom_t, uint32_t, uint32_t))                \
    X(xcb_get_property_reply_t*, xcb_get_property_reply,                                                     \
      (xcb_connection_t*, xcb_get_property_cookie_t, xcb_generic_error_t**))                                 \
    X(void*, xcb_get_property_value, (const xcb_get_property_reply_t*))                                      \
    X(int, xcb_get_property_value_length, (const xcb_get_property_reply_t*))                                 \
    X(xcb_query_tree_cookie_t, xcb_query_tree, (xcb_connection_t*, xcb_window_t))                            \
    X(xcb_query_tree_reply_t*, xcb_query_tree_reply,                                                         \
      (xcb_connection_t*, xcb_query_tree_cookie_t, xcb_generic_error_t**))                                   \
    X(char*, xcb_str_name, (const xcb_str_t*))                                                               \
    X(int, xcb_str_name_length, (const xcb_str_t*))                                                          \
    X(void, xcb_str_next, (xcb_str_iterator_t*))                                                             \
    X(xcb_input_list_input_devices_cookie_t, xcb_input_list_input_devices, (xcb_connection_t*))              \
    X(xcb_input_list_input_devices_reply_t*, xcb_input_list_input_devices_reply,                             \
      (xcb_connection_t*, xcb_input_list_input_devices_cookie_t, xcb_generic_error_t**))                     \
    X(xcb_input_device_info_t*, xcb_input_list_input_devices_devices,                                        \
      (const xcb_input_list_input_devices_reply_t*))                                                         \
    X(int, xcb_input_list_input_devices_devices_length, (const xcb_input_list_input_devices_reply_t*))      \
    X(xcb_str_iterator_t, xcb_input_list_input_devices_names_iterator,                                       \
      (const xcb_input_list_input_devices_reply_t*))                                                         \
    X(xcb_input_xi_grab_device_cookie_t, xcb_input_xi_grab_device,                                           \
      (xcb_connection_t*, xcb_window_t, xcb_timestamp_t, xcb_cursor_t, xcb_input_device_id_t, uint8_t,       \
       uint8_t, uint8_t, uint16_t, const uint32_t*))                                                         \
    X(xcb_input_xi_grab_device_reply_t*, xcb_input_xi_grab_device_reply,                                     \
      (xcb_connection_t*, xcb_input_xi_grab_device_cookie_t, xcb_generic_error_t**))                         \
    X(xcb_void_cookie_t, xcb_input_xi_select_events_checked,                                                 \
      (xcb_connection_t*, xcb_window_t, uint16_t, const xcb_input_event_mask_t*))                            \
    X(xcb_void_cookie_t, xcb_input_xi_ungrab_device_checked,                                                 \
      (xcb_connection_t*, xcb_timestamp_t, xcb_input_device_id_t))

struct XApi {
    RAVLIN_FUNCTION_TABLE(RAVLIN_X_FUNCTIONS)

    // The X client libraries, or null when one of them or one of their
    // functions is missing. Loaded by the first caller, whichever thread it
    // is on; closed when the add-in is unloaded.
    static const XApi* get();
};

// An XCB reply (or error), which the library allocates with malloc.
struct XcbFree {
    void operator()(void* p) const { std::free(p); }
};
template <class T>
using XcbReply = std::unique_ptr<T, XcbFree>;
