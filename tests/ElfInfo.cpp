#include "ElfInfo.h"

#include <elf.h>

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace {

struct Elf {
    explicit Elf(const std::string& path)
    {
        std::ifstream in(path, std::ios::binary);
        bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
        if (bytes.size() < sizeof(Elf64_Ehdr) || bytes.compare(0, 4, ELFMAG) != 0)
            throw std::runtime_error("not an ELF file: " + path);
    }
    const Elf64_Ehdr& header() const { return *reinterpret_cast<const Elf64_Ehdr*>(bytes.data()); }
    const Elf64_Shdr& section(size_t i) const
    {
        return *reinterpret_cast<const Elf64_Shdr*>(bytes.data() + header().e_shoff + i * header().e_shentsize);
    }
    const Elf64_Shdr* sectionOfType(uint32_t type) const
    {
        for (size_t i = 0; i < header().e_shnum; ++i)
            if (section(i).sh_type == type)
                return &section(i);
        return nullptr;
    }
    const char* stringAt(const Elf64_Shdr& strtab, size_t offset) const
    {
        return bytes.data() + strtab.sh_offset + offset;
    }
    std::string bytes;
};

}  // namespace

std::set<std::string> definedDynamicSymbols(const std::string& path)
{
    Elf elf(path);
    std::set<std::string> names;
    const Elf64_Shdr* dynsym = elf.sectionOfType(SHT_DYNSYM);
    if (!dynsym)
        return names;
    const Elf64_Shdr& strtab = elf.section(dynsym->sh_link);
    const size_t count = dynsym->sh_size / sizeof(Elf64_Sym);
    for (size_t i = 1; i < count; ++i) {
        const auto& sym = *reinterpret_cast<const Elf64_Sym*>(elf.bytes.data() + dynsym->sh_offset + i * sizeof(Elf64_Sym));
        if (sym.st_shndx != SHN_UNDEF && ELF64_ST_BIND(sym.st_info) != STB_LOCAL)
            names.insert(elf.stringAt(strtab, sym.st_name));
    }
    return names;
}

std::vector<std::string> neededLibraries(const std::string& path)
{
    Elf elf(path);
    std::vector<std::string> needed;
    const Elf64_Shdr* dynamic = elf.sectionOfType(SHT_DYNAMIC);
    if (!dynamic)
        return needed;
    const Elf64_Shdr& strtab = elf.section(dynamic->sh_link);
    const size_t count = dynamic->sh_size / sizeof(Elf64_Dyn);
    for (size_t i = 0; i < count; ++i) {
        const auto& d = *reinterpret_cast<const Elf64_Dyn*>(elf.bytes.data() + dynamic->sh_offset + i * sizeof(Elf64_Dyn));
        if (d.d_tag == DT_NEEDED)
            needed.push_back(elf.stringAt(strtab, d.d_un.d_val));
    }
    return needed;
}
