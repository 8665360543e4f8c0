#pragma once
// Byte strings to wide text and back. ConvertMbsToWcs/ConvertUTF8Input decode a
// single named (or guessed) code set through iconv and give nothing at all on a
// bad sequence; the UTF helpers always mean UTF-8 and skip what is invalid.
#include <string>

std::wstring ConvertMbsToWcs(std::string text, std::wstring encoding);
std::wstring ConvertUTF8Input(const char* text);
// Tells UTF-8 Cyrillic/Latin text from Windows-1251 by counting bytes.
bool IsUTF8String(const char* text);
bool NotASCII(char c);

// One byte of a single-byte code set iconv knows ("CP1251", "CP866") in UTF-8;
// empty where the code set leaves the byte undefined.
std::string singleByteToUtf8(char byte, const char* codeSet);

std::string wstr2str(const std::wstring& text);
std::wstring str2wstr(const std::string& text);
