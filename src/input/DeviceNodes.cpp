#include "input/DeviceNodes.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>

#include "input/EvdevKeyboards.h"
#include "util/SymbolCodecs.h"
#include "util/XApi.h"

namespace {

void walk(int dirFd, const std::string& path, const std::string& prefix, std::vector<std::string>& found)
{
    DIR* dir = fdopendir(dirFd);
    if (!dir) {
        close(dirFd);
        return;
    }
    while (dirent* entry = readdir(dir)) {
        const char* name = entry->d_name;
        if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0)
            continue;
        const std::string full = path + name;
        if (std::strncmp(name, prefix.c_str(), prefix.size()) == 0)
            found.push_back(full);
        bool isDir = entry->d_type == DT_DIR;
        if (entry->d_type == DT_UNKNOWN) {
            struct stat st;
            isDir = fstatat(dirfd(dir), name, &st, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(st.st_mode);
        }
        if (isDir) {
            const int child = openat(dirfd(dir), name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            if (child >= 0)
                walk(child, full + "/", prefix, found);
        }
    }
    closedir(dir);
}

}  // namespace

std::vector<std::string> findDeviceNodes(const std::string& prefix, const std::string& root)
{
    std::vector<std::string> found;
    const int fd = open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0)
        walk(fd, root.back() == '/' ? root : root + "/", prefix, found);
    return found;
}

std::string normalisedDeviceName(std::string name)
{
    TrimXMLIllegalChars(name);
    return name;
}

std::vector<std::string> listKeyboardDeviceNames()
{
    std::vector<std::string> names;
    const XApi* x = XApi::get();
    if (!x)
        return names;  // no X libraries: as when no server can be reached
    xcb_connection_t* c = x->xcb_connect(nullptr, nullptr);
    if (x->xcb_connection_has_error(c)) {
        x->xcb_disconnect(c);
        return names;
    }
    XcbReply<xcb_input_list_input_devices_reply_t> devices(
        x->xcb_input_list_input_devices_reply(c, x->xcb_input_list_input_devices(c), nullptr));
    static const char kKeyboard[] = "KEYBOARD";
    XcbReply<xcb_intern_atom_reply_t> keyboardAtom(
        x->xcb_intern_atom_reply(c, x->xcb_intern_atom(c, 1, sizeof kKeyboard - 1, kKeyboard), nullptr));
    if (devices && keyboardAtom && keyboardAtom->atom != XCB_NONE) {
        const xcb_input_device_info_t* info = x->xcb_input_list_input_devices_devices(devices.get());
        xcb_str_iterator_t name = x->xcb_input_list_input_devices_names_iterator(devices.get());
        const int count = x->xcb_input_list_input_devices_devices_length(devices.get());
        for (int i = 0; i < count && name.rem > 0; ++i, x->xcb_str_next(&name))
            if (info[i].device_type == keyboardAtom->atom)
                names.emplace_back(x->xcb_str_name(name.data), x->xcb_str_name_length(name.data));
    }
    x->xcb_disconnect(c);
    return names;
}

std::vector<std::string> listKeyboardChoices()
{
    std::vector<std::string> names;
    std::set<std::string> offered;
    // X's list stays as X gives it, twins included.
    for (const std::string& name : listKeyboardDeviceNames()) {
        names.push_back(normalisedDeviceName(name));
        offered.insert(names.back());
    }
    for (const EvdevKeyboard& keyboard : listEvdevKeyboards())
        if (offered.insert(keyboard.name).second)
            names.push_back(keyboard.name);
    return names;
}
