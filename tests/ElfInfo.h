#pragma once
// Reads a shared library's dynamic symbol table and DT_NEEDED entries.
#include <set>
#include <string>
#include <vector>

std::set<std::string> definedDynamicSymbols(const std::string& path);
std::vector<std::string> neededLibraries(const std::string& path);
