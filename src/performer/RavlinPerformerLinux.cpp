#include "performer/RavlinPerformerLinux.h"

#include <memory>

#include "params/LinuxParametersTableBuilder.h"
#include "performer/AppSettings.h"

std::wstring RavlinPerformerLinux::GetParameters()
{
    std::unique_ptr<ParametersTableBuilder> builder =
        std::make_unique<LinuxParametersTableBuilder>(AppSettings::locale() == 0);
    builder->BuildProduct(false);
    return builder->GetProduct();
}
