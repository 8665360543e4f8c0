#include "OrdinaryUser.h"

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <regex>
#include <stdexcept>

#include "AddinHost.h"

namespace {

namespace fs = std::filesystem;

// The copies, made once, removed when the test program ends.
class ToolCopy {
public:
    explicit ToolCopy(const fs::path& tool)
    {
        char dir[] = "/tmp/ravlin-tool-XXXXXX";
        if (!mkdtemp(dir) || chmod(dir, 0755) != 0)
            throw std::runtime_error("cannot make a folder for the tool's copy");
        folder = dir;
        path = folder / "ravlin-host";
        fs::copy_file(tool, path);
        fs::copy_file(addinLibrary((tool.parent_path() / "RavlinNativeLin64.so").string()),
                      folder / "RavlinNativeLin64.so");
        // A sanitizer's suppressions, in the build tree too, go along.
        for (const char* name : {"ASAN_OPTIONS", "LSAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS"}) {
            const char* value = std::getenv(name);
            std::smatch file;
            std::string options = value ? value : "";
            if (!std::regex_search(options, file, std::regex("suppressions=([^: ]+)")))
                continue;
            const fs::path copied = folder / (std::string(name) + ".supp");
            fs::copy_file(file[1].str(), copied);
            options.replace(static_cast<size_t>(file.position(1)), static_cast<size_t>(file.length(1)), copied);
            settings.push_back(std::string(name) + "=" + options);
        }
    }
    ~ToolCopy()
    {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }

    fs::path folder, path;
    std::vector<std::string> settings;  // environment entries pointing at the copies
};

}  // namespace

std::vector<std::string> asOrdinaryUser(const std::vector<std::string>& command)
{
    std::vector<std::string> full = {"/usr/bin/setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"};
    full.insert(full.end(), command.begin(), command.end());
    return full;
}

std::vector<std::string> ravlinHostAsOrdinaryUser(const std::string& tool, const std::vector<std::string>& args)
{
    static const ToolCopy copy(tool);
    // The copy loads the add-in beside it, not one RAVLIN_LIBRARY may name.
    std::vector<std::string> command = {"/usr/bin/env", "-u", "RAVLIN_LIBRARY"};
    command.insert(command.end(), copy.settings.begin(), copy.settings.end());
    command.push_back(copy.path.string());
    command.insert(command.end(), args.begin(), args.end());
    return asOrdinaryUser(command);
}
