#include "input/NonPrintableKeys.h"

using K = NonPrintableKeys;

// The full name of "none" is stored already escaped: it goes into XML as is.
const std::map<K::KeyID, K::KeyName> objNonPrintableKeysNames = {
    {K::NoKey, {"", L"&lt;NONE&gt;"}},
    {K::F1, {"'F1'", L"F1"}},
    {K::F2, {"'F2'", L"F2"}},
    {K::F3, {"'F3'", L"F3"}},
    {K::F4, {"'F4'", L"F4"}},
    {K::F5, {"'F5'", L"F5"}},
    {K::F6, {"'F6'", L"F6"}},
    {K::F7, {"'F7'", L"F7"}},
    {K::F8, {"'F8'", L"F8"}},
    {K::F9, {"'F9'", L"F9"}},
    {K::F10, {"'F10'", L"F10"}},
    {K::F11, {"'F11'", L"F11"}},
    {K::F12, {"'F12'", L"F12"}},
    {K::Insert, {"'INSERT'", L"INSERT"}},
    {K::Delete, {"'DELETE'", L"DELETE"}},
    {K::Home, {"'HOME'", L"HOME"}},
    {K::End, {"'END'", L"END"}},
    {K::PgUp, {"'PgUp'", L"PgUp"}},
    {K::PgDn, {"'PgDn'", L"PgDn"}},
    {K::CapsLock, {"'CAPSLOCK'", L"CAPSLOCK"}},
    {K::RightAlt, {"'RIGHT_ALT'", L"RIGHT_ALT"}},
    {K::NumpadEnter, {"'CR(Numpad)'", L"NUMPAD_ENTER"}},
};

const std::map<K::KeyID, uint64_t> objNonPrintableKeysKeyLinuxData = {
    {K::NoKey, 0},           {K::F1, 0xFFBE},       {K::F2, 0xFFBF},      {K::F3, 0xFFC0},
    {K::F4, 0xFFC1},        {K::F5, 0xFFC2},       {K::F6, 0xFFC3},      {K::F7, 0xFFC4},
    {K::F8, 0xFFC5},        {K::F9, 0xFFC6},       {K::F10, 0xFFC7},     {K::F11, 0xFFC8},
    {K::F12, 0xFFC9},       {K::Insert, 0xFF63},   {K::Delete, 0xFFFF},  {K::Home, 0xFF50},
    {K::End, 0xFF57},       {K::PgUp, 0xFF55},     {K::PgDn, 0xFF56},    {K::CapsLock, 0xFFE5},
    {K::RightAlt, 0xFFEA},  {K::NumpadEnter, 0xFF8D},
};

std::wstring NonPrintableKeys::getKeyFullName(KeyID id)
{
    auto it = objNonPrintableKeysNames.find(id);
    return it != objNonPrintableKeysNames.end() ? it->second.fullName : std::wstring();
}

uint64_t NonPrintableKeys::getKeyLinuxData(KeyID id)
{
    auto it = objNonPrintableKeysKeyLinuxData.find(id);
    return it != objNonPrintableKeysKeyLinuxData.end() ? it->second : 0;
}

std::string NonPrintableKeys::getKeyShortName(unsigned long keysym)
{
    for (const auto& [id, sym] : objNonPrintableKeysKeyLinuxData)
        if (sym == keysym) {
            auto it = objNonPrintableKeysNames.find(id);
            return it != objNonPrintableKeysNames.end() ? it->second.shortName : std::string();
        }
    return std::string();
}
