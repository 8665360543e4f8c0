#include "SymbologyTap.h"

#include "input/InputDeviceHidPos.h"

SymbologyTap::SymbologyTap() = default;

SymbologyTap::~SymbologyTap() = default;

bool SymbologyTap::start(uint32_t port)
{
    DeviceSettings settings;
    settings.port = port;
    auto tap = std::make_unique<InputDeviceHidPos>(DataCallback(), settings,
                                                   [this](const std::wstring&, const std::string& symbology) {
                                                       std::lock_guard<std::mutex> guard(lock);
                                                       symbologies.push_back(symbology);
                                                       arrived.notifyAll();
                                                   });
    if (!tap->start())
        return false;
    reader = std::move(tap);
    return true;
}

std::optional<std::string> SymbologyTap::next(std::chrono::milliseconds patience)
{
    std::unique_lock<std::mutex> guard(lock);
    if (!reader || !arrived.waitFor(guard, patience, [&] { return !symbologies.empty(); }))
        return std::nullopt;
    std::string symbology = std::move(symbologies.front());
    symbologies.pop_front();
    return symbology;
}
