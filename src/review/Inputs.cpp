#include "Inputs.h"

#include "Digest.h"
#include "platform/core/ProgramBuild.h"
#include "platform/graphics/FontSystem.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace velmorant::review {
namespace fs = std::filesystem;

std::string programDigest() {
    std::string id = platform::programBuildId();
    if (!id.empty()) return "build-id:" + sha256(id).substr(0, 40);
    return sha256(readBytes("/proc/self/exe"));
}

std::string fontsDigest(const fs::path& fontsConf) {
    Digest digest;
    digest.add(readBytes(fontsConf));
    try {
        digest.add(platform::FontSystem(fontsConf).fontFiles());
    } catch (const std::runtime_error&) {
        // An unreadable configuration is told by its bytes alone.
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
