#pragma once
// Small string helpers: trimming, replacing, lower case, numbers as text.
#include <string>

void trim(std::string& text);
void trim(std::wstring& text);
std::string trimed(const std::string& text);
std::wstring trimed(const std::wstring& text);

std::string replace(const std::string& text, const std::string& from, const std::string& to);
std::wstring replace(const std::wstring& text, const std::wstring& from, const std::wstring& to);

std::string str_tolower(const std::string& text);
std::wstring str_tolower(const std::wstring& text);

std::string int_to_str(int value);
std::wstring int_to_wstr(int value);
