#include "platform/graphics/detail/ArtworkCache.h"

#include "platform/graphics/detail/KeptImageFile.h"

#include <librsvg/rsvg.h>

#include <cstdio>
#include <cstring>

namespace velmorant::platform {
namespace {

// Bumped whenever the layout of an entry changes.
constexpr KeptImageKind kKind = {'V', 'M', 'A', 'R', 'T', 0, 0, 2};

}  // namespace

std::filesystem::path ArtworkCache::defaultFolder() { return userCacheFolder("velmorant-artwork"); }

std::string ArtworkCache::entryName(std::string_view stem, std::string_view svg, double scale) {
    // The renderer's version is part of the key: another one may draw other pixels.
    char facts[96];
    std::snprintf(facts, sizeof facts, "%a|%d.%d.%d|%zu", scale, LIBRSVG_MAJOR_VERSION, LIBRSVG_MINOR_VERSION,
                  LIBRSVG_MICRO_VERSION, svg.size());
    GChecksum* checksum = g_checksum_new(G_CHECKSUM_SHA256);
    g_checksum_update(checksum, reinterpret_cast<const guchar*>(svg.data()), static_cast<gssize>(svg.size()));
    g_checksum_update(checksum, reinterpret_cast<const guchar*>(facts), static_cast<gssize>(std::strlen(facts)));
    std::string name = std::string(stem) + "-" + std::string(g_checksum_get_string(checksum), 40) + ".bitmap";
    g_checksum_free(checksum);
    return name;
}

std::shared_ptr<Image> ArtworkCache::find(const std::string& entry, double scale) const {
    if (folder_.empty()) return nullptr;
    std::optional<KeptImage> kept = readKeptImage(folder_ / entry, kKind, scale);
    return kept ? std::move(kept->image) : nullptr;
}

void ArtworkCache::keep(const std::string& entry, const Image& image) const {
    if (!folder_.empty()) writeKeptImage(folder_, entry, kKind, image);
}

}  // namespace velmorant::platform
