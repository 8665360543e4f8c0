#pragma once
// Names and display forms of symbols, the human-readable rendering of raw bytes
// (HRS) and its parser, Base64 and the XML blanking filter.
#include <string>

#include "abi/DeviceCodes.h"

std::wstring GetSymbolName(wchar_t symbol);
std::wstring FormatSymbolForDisplay(wchar_t symbol);
std::wstring FormatSymbolAsNumber(wchar_t symbol);

// Blanks markup characters, control characters (XML cannot carry them, and an
// attribute turns tabs and line ends into spaces) and non-ASCII bytes so
// outside text can sit in XML.
bool TrimXMLIllegalChars(std::string& text);

std::string raw2HRS(const char* data, int length);
std::string raw2HRS(const std::string& data);
std::wstring raw2HRS(const std::wstring& text);
std::wstring raw2HRS(const wchar_t* text, int length);

std::wstring hrs2Raw(const std::wstring& hrs);
int hrs2Raw(wchar_t* out, const std::wstring& hrs, int capacity);

std::wstring raw2Printable(const wchar_t* text, int length);
std::wstring raw2Printable(std::wstring& text);

std::string base64_encode(const std::string& bytes);
std::string base64_decode(const std::string& text);
std::string raw2Base64(const std::string& bytes);
std::string base642Raw(const std::string& text);
std::wstring raw2Base64(const std::wstring& text);
std::wstring base642Raw(const std::wstring& text);

// A code (Base64 from a reader) in the form an output data type asks for: the
// Base64 as is, the human-readable rendering, or (for any other number) the text.
std::wstring decodeForOutput(const std::wstring& base64, OutputDataType outputDataType);
