#pragma once
// Names of the external events, keyed by (equipment code | output data type).
#include <string>

#include "abi/DeviceCodes.h"

// locale: 0 Russian, 1 English; any other code reads as Russian.
const std::wstring& eventNameFor(unsigned locale, EquipmentCode equipment, OutputDataType output);
