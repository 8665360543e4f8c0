#include "OrdinaryUser.h"

#include <sys/stat.h>

#include <filesystem>
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
    }
    ~ToolCopy()
    {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }

    fs::path folder, path;
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
    std::vector<std::string> command = {"/usr/bin/env", "-u", "RAVLIN_LIBRARY", copy.path.string()};
    command.insert(command.end(), args.begin(), args.end());
    return asOrdinaryUser(command);
}
