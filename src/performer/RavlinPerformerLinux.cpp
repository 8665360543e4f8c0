#include "performer/RavlinPerformerLinux.h"

std::wstring RavlinPerformerLinux::GetParameters()
{
    return std::wstring();
}
