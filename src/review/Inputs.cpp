#include "Inputs.h"

#include "Digest.h"
#include "platform/graphics/detail/CHandles.h"

#include <elf.h>
#include <link.h>

#include <algorithm>
#include <vector>

namespace velmorant::review {
namespace {

namespace fs = std::filesystem;

// The build id note of the main program, found among its loaded segments.
int findBuildId(dl_phdr_info* info, std::size_t, void* out) {
    auto& id = *static_cast<std::string*>(out);
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const ElfW(Phdr)& segment = info->dlpi_phdr[i];
        if (segment.p_type != PT_NOTE) continue;
        const char* at = reinterpret_cast<const char*>(info->dlpi_addr + segment.p_vaddr);
        const char* end = at + segment.p_memsz;
        while (at + sizeof(ElfW(Nhdr)) <= end) {
            const auto* note = reinterpret_cast<const ElfW(Nhdr)*>(at);
            const char* name = at + sizeof(ElfW(Nhdr));
            const char* desc = name + ((note->n_namesz + 3) & ~3u);
            if (note->n_type == NT_GNU_BUILD_ID && note->n_namesz == 4 && std::string_view(name, 3) == "GNU") {
                id.assign(desc, note->n_descsz);
                return 1;
            }
            at = desc + ((note->n_descsz + 3) & ~3u);
        }
    }
    return 1;  // only the first object, the program itself
}

}  // namespace

std::string programDigest() {
    std::string id;
    dl_iterate_phdr(findBuildId, &id);
    if (!id.empty()) return "build-id:" + sha256(id).substr(0, 40);
    return sha256(readBytes("/proc/self/exe"));
}

std::string fontsDigest(const fs::path& fontsConf) {
    Digest digest;
    digest.add(readBytes(fontsConf));
    platform::FcConfigPtr config(FcConfigCreate());
    if (!FcConfigParseAndLoad(config.get(), reinterpret_cast<const FcChar8*>(fontsConf.c_str()), FcTrue) ||
        !FcConfigBuildFonts(config.get()))
        return digest.hex();
    std::vector<std::string> files;
    FcFontSet* fonts = FcConfigGetFonts(config.get(), FcSetSystem);
    for (int i = 0; fonts && i < fonts->nfont; ++i) {
        FcChar8* file = nullptr;
        if (FcPatternGetString(fonts->fonts[i], FC_FILE, 0, &file) == FcResultMatch)
            files.emplace_back(reinterpret_cast<const char*>(file));
    }
    std::sort(files.begin(), files.end());
    files.erase(std::unique(files.begin(), files.end()), files.end());
    for (const std::string& file : files) {
        std::error_code ec;
        auto size = fs::file_size(file, ec);
        auto time = fs::last_write_time(file, ec).time_since_epoch().count();
        digest.add(file + "\n" + std::to_string(size) + "\n" + std::to_string(time) + "\n");
    }
    return digest.hex();
}

std::string folderDigest(const fs::path& dir) {
    std::vector<fs::path> files;
    std::error_code ec;
    for (auto it = fs::recursive_directory_iterator(dir, ec); !ec && it != fs::recursive_directory_iterator(); it.increment(ec))
        if (it->is_regular_file()) files.push_back(it->path());
    std::sort(files.begin(), files.end());
    Digest digest;
    for (const fs::path& file : files) {
        std::string bytes = readBytes(file);
        digest.add(fs::relative(file, dir).string() + "\n" + std::to_string(bytes.size()) + "\n").add(bytes);
    }
    return digest.hex();
}

}  // namespace velmorant::review
