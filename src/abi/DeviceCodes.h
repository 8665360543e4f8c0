#pragma once
// The two codes the host's events are named by; their values are the host's.

// What kind of reader a device is.
enum class EquipmentCode : int { BarcodeScanner = 16, CardReader = 32 };

// The form a code reaches the host in. Other numbers are accepted from the host
// and read as text.
enum class OutputDataType : int { Text = 0, HumanReadable = 1, Base64 = 2 };
