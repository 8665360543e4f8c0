#pragma once
// The host's value record. Its layout is shared with the host process, so the
// offsets below are part of the ABI, not an implementation detail.
#include <cstddef>
#include <cstdint>

enum VariantType : uint16_t {
    VTYPE_EMPTY = 0,
    VTYPE_I2 = 2,
    VTYPE_I4 = 3,
    VTYPE_R4 = 4,
    VTYPE_R8 = 5,
    VTYPE_ERROR = 10,
    VTYPE_BOOL = 11,
    VTYPE_I1 = 14,
    VTYPE_UI1 = 15,
    VTYPE_UI4 = 16,
    VTYPE_I8 = 17,
    VTYPE_UI8 = 18,
    VTYPE_PWSTR = 22,
};

struct tVariant {
    union {
        int32_t lVal;
        bool bVal;
        double dblVal;
        int64_t llVal;
        uint64_t ullVal;
        unsigned short* pwstrVal;
    };
    uint32_t wstrLen;  // string length in 16-bit units, terminator excluded
    uint8_t reserved[48];
    uint16_t vt;
    uint16_t reserved2;
};

static_assert(sizeof(tVariant) == 64, "tVariant must be 64 bytes");
static_assert(offsetof(tVariant, wstrLen) == 8, "string length at offset 8");
static_assert(offsetof(tVariant, vt) == 60, "type code at offset 60");
