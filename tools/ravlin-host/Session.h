#pragma once
// What every subcommand starts from: the add-in loaded from beside this
// program (or from RAVLIN_LIBRARY), one component created and initialised as the platform does it.
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "AddinHost.h"

class Session {
public:
    explicit Session(const std::string& locale, const std::wstring& className = L"InputDevice");
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    AddinHost host;
    Component component;

    // The parameters document the driver answers.
    std::string parameters();
};

std::string libraryPath();

// Parameters by the type the driver reads them with.
enum class ParameterKind { Integer, Text, Bool };
const std::vector<std::pair<std::string, ParameterKind>>& parameterTable();
// "Name=Value" typed by the table; std::invalid_argument names what is wrong.
tVariant parseParameter(Component& component, const std::string& assignment, std::wstring& name);

// One event as a line of text, or as one JSON object (with the scan's
// symbology when it is known).
std::string formatEvent(const HostEvent& event, bool json, const std::optional<std::string>& symbology = std::nullopt);
// Adds --locale ru|en.
void addLocaleOption(CLI::App& app, std::string& locale);
