#pragma once
// The kernel's key codes read as a US keyboard: scanners emulate one by
// default, whatever layout the session uses. Keysyms are X's, so that the GS
// keys, the configured GS key and test mode's key names are told apart by
// the same values on every path.
namespace UsKeyboard {

// The keysym of a key at its shift level; 0 for a key a US keyboard lacks.
// The keypad gives digits, as with Num Lock on (a scanner's keypad emulation
// counts on it); shifted, its digits are the navigation keys.
unsigned long keysym(unsigned code, bool shift);

// The byte a keysym types with Control and Caps Lock in the given state, or
// KeyFramer::kTypesNothing; the rule of X's own keysym-to-text lookup. Caps
// Lock inverts the case of letters (Shift with it gives lower case).
int typedByte(unsigned long keysym, bool control, bool capsLock);

}  // namespace UsKeyboard
