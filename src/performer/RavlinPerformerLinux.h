#pragma once
#include "performer/RavlinPerformerDesktop.h"

class RavlinPerformerLinux : public RavlinPerformerDesktop {
public:
    RavlinPerformerLinux(IAddInDefBaseEx* connection, const InputCallback& onInput)
        : RavlinPerformerDesktop(connection, onInput) {}

    std::wstring GetParameters() override;
};
