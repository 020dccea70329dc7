#include "platform/core/ProgramBuild.h"

#include <elf.h>
#include <link.h>

#include <string_view>

namespace velmorant::platform {
namespace {

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

std::string programBuildId() {
    std::string id;
    dl_iterate_phdr(findBuildId, &id);
    return id;
}

}  // namespace velmorant::platform
