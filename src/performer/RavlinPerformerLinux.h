#pragma once
#include "performer/RavlinPerformerDesktop.h"

class RavlinPerformerLinux : public RavlinPerformerDesktop {
public:
    explicit RavlinPerformerLinux(const InputCallback& onInput) : RavlinPerformerDesktop(onInput) {}

    std::wstring GetParameters() override;
};
