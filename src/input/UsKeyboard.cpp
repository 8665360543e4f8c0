#include "input/UsKeyboard.h"

#include <X11/keysym.h>
#include <linux/input-event-codes.h>

#include <unordered_map>
#include <utility>

#include "input/KeyFramer.h"

namespace {

using Levels = std::pair<unsigned long, unsigned long>;  // unshifted, shifted

const std::unordered_map<unsigned, Levels>& table()
{
    static const std::unordered_map<unsigned, Levels> keys = {
        {KEY_A, {XK_a, XK_A}}, {KEY_B, {XK_b, XK_B}}, {KEY_C, {XK_c, XK_C}}, {KEY_D, {XK_d, XK_D}},
        {KEY_E, {XK_e, XK_E}}, {KEY_F, {XK_f, XK_F}}, {KEY_G, {XK_g, XK_G}}, {KEY_H, {XK_h, XK_H}},
        {KEY_I, {XK_i, XK_I}}, {KEY_J, {XK_j, XK_J}}, {KEY_K, {XK_k, XK_K}}, {KEY_L, {XK_l, XK_L}},
        {KEY_M, {XK_m, XK_M}}, {KEY_N, {XK_n, XK_N}}, {KEY_O, {XK_o, XK_O}}, {KEY_P, {XK_p, XK_P}},
        {KEY_Q, {XK_q, XK_Q}}, {KEY_R, {XK_r, XK_R}}, {KEY_S, {XK_s, XK_S}}, {KEY_T, {XK_t, XK_T}},
        {KEY_U, {XK_u, XK_U}}, {KEY_V, {XK_v, XK_V}}, {KEY_W, {XK_w, XK_W}}, {KEY_X, {XK_x, XK_X}},
        {KEY_Y, {XK_y, XK_Y}}, {KEY_Z, {XK_z, XK_Z}},
        {KEY_1, {XK_1, XK_exclam}}, {KEY_2, {XK_2, XK_at}}, {KEY_3, {XK_3, XK_numbersign}},
        {KEY_4, {XK_4, XK_dollar}}, {KEY_5, {XK_5, XK_percent}}, {KEY_6, {XK_6, XK_asciicircum}},
        {KEY_7, {XK_7, XK_ampersand}}, {KEY_8, {XK_8, XK_asterisk}}, {KEY_9, {XK_9, XK_parenleft}},
        {KEY_0, {XK_0, XK_parenright}},
        {KEY_MINUS, {XK_minus, XK_underscore}}, {KEY_EQUAL, {XK_equal, XK_plus}},
        {KEY_LEFTBRACE, {XK_bracketleft, XK_braceleft}}, {KEY_RIGHTBRACE, {XK_bracketright, XK_braceright}},
        {KEY_SEMICOLON, {XK_semicolon, XK_colon}}, {KEY_APOSTROPHE, {XK_apostrophe, XK_quotedbl}},
        {KEY_GRAVE, {XK_grave, XK_asciitilde}}, {KEY_BACKSLASH, {XK_backslash, XK_bar}},
        {KEY_COMMA, {XK_comma, XK_less}}, {KEY_DOT, {XK_period, XK_greater}},
        {KEY_SLASH, {XK_slash, XK_question}}, {KEY_SPACE, {XK_space, XK_space}},
        {KEY_102ND, {XK_less, XK_greater}},
        {KEY_ENTER, {XK_Return, XK_Return}}, {KEY_TAB, {XK_Tab, XK_ISO_Left_Tab}},
        {KEY_BACKSPACE, {XK_BackSpace, XK_BackSpace}}, {KEY_ESC, {XK_Escape, XK_Escape}},
        {KEY_INSERT, {XK_Insert, XK_Insert}}, {KEY_DELETE, {XK_Delete, XK_Delete}},
        {KEY_HOME, {XK_Home, XK_Home}}, {KEY_END, {XK_End, XK_End}},
        {KEY_PAGEUP, {XK_Page_Up, XK_Page_Up}}, {KEY_PAGEDOWN, {XK_Page_Down, XK_Page_Down}},
        {KEY_LEFT, {XK_Left, XK_Left}}, {KEY_RIGHT, {XK_Right, XK_Right}},
        {KEY_UP, {XK_Up, XK_Up}}, {KEY_DOWN, {XK_Down, XK_Down}},
        {KEY_F1, {XK_F1, XK_F1}}, {KEY_F2, {XK_F2, XK_F2}}, {KEY_F3, {XK_F3, XK_F3}},
        {KEY_F4, {XK_F4, XK_F4}}, {KEY_F5, {XK_F5, XK_F5}}, {KEY_F6, {XK_F6, XK_F6}},
        {KEY_F7, {XK_F7, XK_F7}}, {KEY_F8, {XK_F8, XK_F8}}, {KEY_F9, {XK_F9, XK_F9}},
        {KEY_F10, {XK_F10, XK_F10}}, {KEY_F11, {XK_F11, XK_F11}}, {KEY_F12, {XK_F12, XK_F12}},
        {KEY_CAPSLOCK, {XK_Caps_Lock, XK_Caps_Lock}}, {KEY_NUMLOCK, {XK_Num_Lock, XK_Num_Lock}},
        {KEY_LEFTSHIFT, {XK_Shift_L, XK_Shift_L}}, {KEY_RIGHTSHIFT, {XK_Shift_R, XK_Shift_R}},
        {KEY_LEFTCTRL, {XK_Control_L, XK_Control_L}}, {KEY_RIGHTCTRL, {XK_Control_R, XK_Control_R}},
        {KEY_LEFTALT, {XK_Alt_L, XK_Alt_L}}, {KEY_RIGHTALT, {XK_Alt_R, XK_Alt_R}},
        // Num Lock on: Shift turns the digits back into the navigation keys, which type nothing.
        {KEY_KP0, {XK_KP_0, XK_KP_Insert}}, {KEY_KP1, {XK_KP_1, XK_KP_End}}, {KEY_KP2, {XK_KP_2, XK_KP_Down}},
        {KEY_KP3, {XK_KP_3, XK_KP_Next}}, {KEY_KP4, {XK_KP_4, XK_KP_Left}}, {KEY_KP5, {XK_KP_5, XK_KP_Begin}},
        {KEY_KP6, {XK_KP_6, XK_KP_Right}}, {KEY_KP7, {XK_KP_7, XK_KP_Home}}, {KEY_KP8, {XK_KP_8, XK_KP_Up}},
        {KEY_KP9, {XK_KP_9, XK_KP_Prior}}, {KEY_KPDOT, {XK_KP_Decimal, XK_KP_Delete}},
        {KEY_KPENTER, {XK_KP_Enter, XK_KP_Enter}}, {KEY_KPPLUS, {XK_KP_Add, XK_KP_Add}},
        {KEY_KPMINUS, {XK_KP_Subtract, XK_KP_Subtract}}, {KEY_KPASTERISK, {XK_KP_Multiply, XK_KP_Multiply}},
        {KEY_KPSLASH, {XK_KP_Divide, XK_KP_Divide}}, {KEY_KPEQUAL, {XK_KP_Equal, XK_KP_Equal}},
    };
    return keys;
}

// Function keys that type a control character or a keypad character.
bool typesAscii(unsigned long sym)
{
    return (sym >= XK_BackSpace && sym <= XK_Clear) || sym == XK_Return || sym == XK_Escape ||
           sym == XK_KP_Tab || sym == XK_KP_Enter || (sym >= XK_KP_Multiply && sym <= XK_KP_9) ||
           sym == XK_KP_Equal || sym == XK_Delete;
}

}  // namespace

unsigned long UsKeyboard::keysym(unsigned code, bool shift)
{
    const auto it = table().find(code);
    if (it == table().end())
        return 0;
    return shift ? it->second.second : it->second.first;
}

int UsKeyboard::typedByte(unsigned long keysym, bool control, bool capsLock)
{
    // Caps Lock inverts the case Shift chose, for letters only.
    if (capsLock && keysym >= XK_a && keysym <= XK_z)
        keysym -= XK_a - XK_A;
    else if (capsLock && keysym >= XK_A && keysym <= XK_Z)
        keysym += XK_a - XK_A;
    int c;
    if (keysym < 0x80)
        c = static_cast<int>(keysym);
    else if (keysym == XK_KP_Space)
        c = ' ';
    else if (typesAscii(keysym))
        c = static_cast<int>(keysym & 0x7F);
    else
        return KeyFramer::kTypesNothing;
    if (control) {
        if ((c >= '@' && c < 0x7F) || c == ' ')
            c &= 0x1F;
        else if (c == '2')
            c = 0;
        else if (c >= '3' && c <= '7')
            c -= '3' - 0x1B;
        else if (c == '8')
            c = 0x7F;
        else if (c == '/')
            c = '_' & 0x1F;
    }
    return c;
}
