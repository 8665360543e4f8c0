#pragma once
// Text and value conversions at the host interface. The host speaks
// zero-terminated 16-bit units; the driver keeps 32-bit wide strings. Units are
// converted one by one (cut to 16 bits on the way out, zero-extended on the way in).
#include <string>

#include "abi/IMemoryManager.h"
#include "abi/Types.h"

unsigned int getLenShortWcharStr(const unsigned short* s);

// len 0 means "the source's length plus the terminator". A null *dest gets a
// new[] array the caller frees with delete[].
unsigned int convToShortWchar(unsigned short** dest, const wchar_t* src, unsigned int len = 0);
unsigned int convFromShortWchar(wchar_t** dest, const unsigned short* src, unsigned int len = 0);
std::wstring convFromShortWchar(const unsigned short* src, unsigned int len);
std::wstring convFromShortWchar(const tVariant& value);

bool convVarToInt(const tVariant& value, int& out);
bool convVarToDWORD(const tVariant& value, unsigned long& out);

// Blocks from these belong to the host once handed over.
unsigned short* AllocAndConvert(IMemoryManager* memory, const wchar_t* text,
                                unsigned int* length = nullptr);
tVariant AllocAndConvertVariant(IMemoryManager* memory, const wchar_t* text);

tVariant makeBoolVariant(bool value);
tVariant makeIntVariant(int32_t value);
bool boolOf(const tVariant& value);
