#include "platform/graphics/LayerStore.h"

#include "platform/core/ProgramBuild.h"
#include "platform/graphics/Canvas.h"
#include "platform/graphics/FontSystem.h"
#include "platform/graphics/detail/KeptImageFile.h"

#include <cairo.h>
#include <glib.h>
#include <pango/pango.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace velmorant::platform {
namespace {

namespace fs = std::filesystem;

// Bumped whenever the layout of an entry changes.
constexpr KeptImageKind kKind = {'V', 'M', 'L', 'A', 'Y', 0, 0, 1};
constexpr std::string_view kSuffix = ".layer";

// A file named with its size and modification time, or "missing".
std::string fileFacts(const fs::path& file) {
    std::error_code ec;
    auto size = fs::file_size(file, ec);
    if (ec) return file.string() + " missing\n";
    auto time = fs::last_write_time(file, ec).time_since_epoch().count();
    return file.string() + " " + std::to_string(size) + " " + std::to_string(time) + "\n";
}

// The running program: its build id, else its file's size and time.
std::string programFacts() {
    std::string id = programBuildId();
    return id.empty() ? fileFacts("/proc/self/exe") : "build " + id + "\n";
}

}  // namespace

LayerStore::LayerStore(fs::path folder, fs::path resourceDir, std::size_t maxBytes)
    : folder_(std::move(folder)), resourceDir_(std::move(resourceDir)), maxBytes_(maxBytes) {}

fs::path LayerStore::defaultFolder() {
    if (const char* chosen = std::getenv("VELMORANT_CACHE_DIR")) return fs::path(chosen);
    return userCacheFolder("velmorant");
}

std::string LayerStore::entryName(const std::string& key, const FontSystem& fonts) {
    if (!inputs_) {
        std::string inputs = programFacts();
        inputs += std::string("cairo ") + cairo_version_string() + " pango " + pango_version_string() + "\n";
        inputs += fonts.fontFiles();
        inputs += fileFacts(resourceDir_ / "fonts" / "fonts.conf");
        std::vector<fs::path> artwork;
        std::error_code ec;
        for (auto it = fs::directory_iterator(resourceDir_ / "images", ec); !ec && it != fs::directory_iterator();
             it.increment(ec))
            artwork.push_back(it->path());
        std::sort(artwork.begin(), artwork.end());
        for (const fs::path& file : artwork) inputs += fileFacts(file);
        inputs_ = std::move(inputs);
    }
    GChecksum* checksum = g_checksum_new(G_CHECKSUM_SHA256);
    g_checksum_update(checksum, reinterpret_cast<const guchar*>(inputs_->data()), static_cast<gssize>(inputs_->size()));
    g_checksum_update(checksum, reinterpret_cast<const guchar*>(key.data()), static_cast<gssize>(key.size()));
    std::string name = std::string(g_checksum_get_string(checksum), 40) + std::string(kSuffix);
    g_checksum_free(checksum);
    return name;
}

std::optional<LayerStore::Layer> LayerStore::find(const std::string& key, Size points, double scale,
                                                  const FontSystem& fonts) {
    if (folder_.empty()) return std::nullopt;
    std::optional<KeptImage> kept = readKeptImage(folder_ / entryName(key, fonts), kKind, scale, points);
    if (!kept) return std::nullopt;
    return Layer{std::move(kept->image), kept->noted};
}

bool LayerStore::drawInto(const std::string& key, Canvas& canvas, const FontSystem& fonts) {
    if (folder_.empty()) return false;
    const fs::path file = folder_ / entryName(key, fonts);
    return canvas.drawLayerFrom([&](Canvas::PixelRows rows) {
        return readKeptImageInto(file, kKind, canvas.size(), rows.data, rows.stride, rows.width, rows.height);
    });
}

void LayerStore::keep(const std::string& key, const Layer& layer, const FontSystem& fonts) {
    if (folder_.empty() || !layer.image) return;
    if (writeKeptImage(folder_, entryName(key, fonts), kKind, *layer.image, layer.drawn)) trim();
}

void LayerStore::trim() const {
    struct Entry {
        fs::path path;
        fs::file_time_type time;
        std::uintmax_t bytes;
    };
    std::vector<Entry> entries;
    std::uintmax_t total = 0;
    std::error_code ec;
    for (auto it = fs::directory_iterator(folder_, ec); !ec && it != fs::directory_iterator(); it.increment(ec)) {
        if (it->path().extension() != kSuffix) continue;
        std::error_code fileError;
        Entry entry{it->path(), it->last_write_time(fileError), it->file_size(fileError)};
        if (fileError) continue;
        total += entry.bytes;
        entries.push_back(std::move(entry));
    }
    if (total <= maxBytes_) return;
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return a.time < b.time; });
    for (const Entry& entry : entries) {
        if (total <= maxBytes_) break;
        if (fs::remove(entry.path, ec)) total -= entry.bytes;
    }
}

}  // namespace velmorant::platform
