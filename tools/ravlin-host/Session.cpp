#include "Session.h"

#include "util/CharsetConversion.h"

#include <CLI/CLI.hpp>
#include <unistd.h>

#include <chrono>
#include <ctime>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace {

std::wstring hostLocale(const std::string& locale)
{
    return locale == "en" ? L"en_US" : L"ru_RU";
}

}  // namespace

std::string libraryPath()
{
    char self[4096];
    const ssize_t n = readlink("/proc/self/exe", self, sizeof self - 1);
    if (n <= 0)
        throw std::runtime_error("cannot find this program's folder");
    std::string path(self, static_cast<size_t>(n));
    return addinLibrary(path.substr(0, path.rfind('/') + 1) + "RavlinNativeLin64.so");
}

Session::Session(const std::string& locale, const std::wstring& className)
    : host(libraryPath()), component(host.create(className, hostLocale(locale)))
{
}

Session::~Session()
{
    IComponentBase* object = component.object();
    host.destroy(object);
}

std::string Session::parameters()
{
    const CallResult r = component.call(L"GetParameters");
    if (!r.returned)
        throw std::runtime_error("GetParameters failed");
    return wstr2str(r.params[0].text);
}

const std::vector<std::pair<std::string, ParameterKind>>& parameterTable()
{
    using K = ParameterKind;
    static const std::vector<std::pair<std::string, ParameterKind>> table = {
        {"Port", K::Integer},          {"KeyboardDevice", K::Text}, {"DataBits", K::Integer},
        {"StopBit", K::Integer},       {"Speed", K::Integer},       {"Prefix", K::Integer},
        {"Suffix", K::Integer},        {"Timeout", K::Integer},     {"TimeoutCOM", K::Integer},
        {"COMEncoding", K::Text},      {"GSSymbolKey", K::Integer}, {"LogFileFolder", K::Text},
        {"EquipmentType", K::Text},    {"OutputDataType", K::Integer}, {"IgnoreKeyboardState", K::Bool},
    };
    return table;
}

tVariant parseParameter(Component& component, const std::string& assignment, std::wstring& name)
{
    std::string valid;
    for (const auto& entry : parameterTable())
        valid += (valid.empty() ? "" : ", ") + entry.first;
    const size_t eq = assignment.find('=');
    const std::string key = assignment.substr(0, eq);
    if (eq == std::string::npos)
        throw std::invalid_argument("\"" + assignment + "\" is not NAME=VALUE; parameters: " + valid);
    const std::string value = assignment.substr(eq + 1);
    for (const auto& [known, kind] : parameterTable()) {
        if (known != key)
            continue;
        name = str2wstr(key);
        if (kind == ParameterKind::Text)
            return component.str(str2wstr(value));
        if (kind == ParameterKind::Bool) {
            if (value == "true" || value == "1")
                return boolVar(true);
            if (value == "false" || value == "0")
                return boolVar(false);
            throw std::invalid_argument(key + " takes true or false, not \"" + value + "\"");
        }
        size_t used = 0;
        long number = 0;
        try {
            number = std::stol(value, &used);
        } catch (const std::exception&) {
            used = 0;
        }
        if (used == 0 || used != value.size() || number < INT32_MIN || number > INT32_MAX)
            throw std::invalid_argument(key + " takes an integer, not \"" + value + "\"");
        return intVar(static_cast<int>(number));
    }
    throw std::invalid_argument("unknown parameter \"" + key + "\"; parameters: " + valid);
}

std::string formatEvent(const HostEvent& event, bool json, const std::optional<std::string>& symbology)
{
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    std::tm local{};
    localtime_r(&seconds, &local);
    char stamp[64];
    std::strftime(stamp, sizeof stamp, "%Y-%m-%dT%H:%M:%S", &local);
    const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
    char time[80];
    std::snprintf(time, sizeof time, "%s.%03lld", stamp, static_cast<long long>(ms));
    if (json) {
        nlohmann::json line{{"time", time}, {"source", wstr2str(event.source)}, {"event", wstr2str(event.name)},
                            {"data", wstr2str(event.data)}};
        if (symbology)
            line["symbology"] = *symbology;
        return line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    }
    return std::string(time) + "  " + wstr2str(event.source) + "  " + wstr2str(event.name) + "  " + wstr2str(event.data);
}

void addLocaleOption(CLI::App& app, std::string& locale)
{
    app.add_option("--locale", locale, "the platform's language passed to the driver")
        ->check(CLI::IsMember({"ru", "en"}))
        ->default_val("ru");
}
