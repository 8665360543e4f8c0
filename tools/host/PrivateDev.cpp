#include "PrivateDev.h"

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <vector>

namespace {

[[noreturn]] void die(const std::string& what)
{
    std::fprintf(stderr, "private namespaces: %s: %s (needs unshare as root, or user namespaces)\n",
                 what.c_str(), std::strerror(errno));
    std::exit(2);
}

void bindFile(const std::string& staging, const char* name)
{
    const std::string source = std::string("/dev/") + name;
    const std::string target = staging + "/" + name;
    struct stat st;
    if (stat(source.c_str(), &st) != 0)
        return;
    const int fd = open(target.c_str(), O_CREAT | O_WRONLY, 0644);
    if (fd < 0)
        die("create " + target);
    close(fd);
    if (mount(source.c_str(), target.c_str(), "none", MS_BIND, nullptr) != 0)
        die("bind " + source);
}

void bindDir(const std::string& staging, const char* name)
{
    const std::string target = staging + "/" + name;
    if (mkdir(target.c_str(), 0755) != 0)
        die("mkdir " + target);
    if (mount((std::string("/dev/") + name).c_str(), target.c_str(), "none", MS_BIND | MS_REC,
              nullptr) != 0)
        die(std::string("bind /dev/") + name);
}

}  // namespace

void enterNamespaces(const char* marker, std::initializer_list<const char*> options, int argc, char** argv)
{
    if (std::getenv(marker))
        return;
    setenv(marker, "1", 1);
    char self[4096];
    const ssize_t n = readlink("/proc/self/exe", self, sizeof self - 1);
    if (n <= 0)
        die("readlink /proc/self/exe");
    self[n] = '\0';
    std::vector<const char*> args = {"unshare"};
    args.insert(args.end(), options);
    args.insert(args.end(), {"--propagation", "private"});
    if (getuid() != 0)
        args.push_back("--map-root-user");
    args.push_back(self);
    for (int i = 1; i < argc; ++i)
        args.push_back(argv[i]);
    args.push_back(nullptr);
    execvp("unshare", const_cast<char**>(args.data()));
    die("exec unshare");
}

void enterPrivateDev(int argc, char** argv)
{
    enterNamespaces("RAVLIN_PRIVATE_DEV", {"--mount"}, argc, argv);
    // Programs started from here get a /dev of their own again, instead of
    // mounting over this one.
    unsetenv("RAVLIN_PRIVATE_DEV");
    char staging[] = "/tmp/ravlin-dev-XXXXXX";
    if (!mkdtemp(staging))
        die("mkdtemp");
    if (mount("tmpfs", staging, "tmpfs", 0, "mode=0755,size=1m") != 0)
        die("mount tmpfs");
    // Pseudo-terminals of its own: a line unplugged here leaves its number
    // free, and in a shared instance another program's new terminal could
    // take it and be read under this program's device name.
    const std::string pts = std::string(staging) + "/pts";
    if (mkdir(pts.c_str(), 0755) != 0 ||
        mount("devpts", pts.c_str(), "devpts", 0, "newinstance,ptmxmode=0666,mode=0620") != 0)
        die("mount devpts");
    bindDir(staging, "shm");
    for (const char* name : {"null", "zero", "full", "random", "urandom", "tty"})
        bindFile(staging, name);
    if (symlink("/proc/self/fd", (std::string(staging) + "/fd").c_str()) != 0)
        die("symlink fd");
    // New pseudo-terminals come from the private instance through its own ptmx.
    if (symlink("pts/ptmx", (std::string(staging) + "/ptmx").c_str()) != 0)
        die("symlink ptmx");
    if (mount(staging, "/dev", "none", MS_MOVE, nullptr) != 0)
        die("move onto /dev");
    rmdir(staging);
}

void linkDevice(const std::string& name, const std::string& target)
{
    const std::string path = "/dev/" + name;
    unlink(path.c_str());
    if (symlink(target.c_str(), path.c_str()) != 0)
        die("symlink " + path);
}

void unlinkDevice(const std::string& name)
{
    unlink(("/dev/" + name).c_str());
}
