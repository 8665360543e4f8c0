#include "addin/EventNames.h"

#include <unordered_map>

namespace {

using EventNames = std::unordered_map<int, std::wstring>;

const EventNames g_EventNamesEn = {
    {16, L"Barcode"}, {18, L"BarcodeBase64"}, {32, L"TrackData"}, {34, L"TrackDataBase64"}};
const EventNames g_EventNamesRus = {
    {16, L"Штрихкод"}, {18, L"ШтрихкодBase64"}, {32, L"ДанныеКарты"}, {34, L"ДанныеКартыBase64"}};
const std::unordered_map<unsigned, EventNames> g_EventNamesLoc = {{1, g_EventNamesEn},
                                                                  {0, g_EventNamesRus}};

}  // namespace

const std::wstring& eventNameFor(unsigned locale, EquipmentCode equipment, OutputDataType output)
{
    const EventNames& names = g_EventNamesLoc.at(locale > 1 ? 0 : locale);
    // The host's names are keyed by the two codes OR-ed together (the code
    // bits and the Base64 bit do not overlap). Human-readable output (17, 33),
    // unknown equipment and unknown output types fall back to "Barcode".
    auto it = names.find(static_cast<int>(equipment) | static_cast<int>(output));
    return it != names.end() ? it->second : names.at(16);
}
