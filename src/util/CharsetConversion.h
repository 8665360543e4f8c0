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

std::string wstr2str(const std::wstring& text);
std::wstring str2wstr(const std::string& text);
