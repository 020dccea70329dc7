#include "platform/graphics/detail/ArtworkCache.h"

#include "platform/core/FileDescriptor.h"
#include "platform/graphics/detail/ImageSurface.h"

#include <librsvg/rsvg.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace velmorant::platform {
namespace {

// Bumped whenever the layout below changes.
constexpr char kMagic[8] = {'V', 'M', 'A', 'R', 'T', 0, 0, 1};

struct Header {
    char magic[8];
    std::uint32_t pixelWidth, pixelHeight;
    double pointWidth, pointHeight;
};

bool readAll(int fd, void* data, std::size_t size) {
    auto* bytes = static_cast<unsigned char*>(data);
    while (size > 0) {
        ssize_t n = ::read(fd, bytes, size);
        if (n <= 0) return false;
        bytes += n;
        size -= static_cast<std::size_t>(n);
    }
    return true;
}

bool writeAll(int fd, const void* data, std::size_t size) {
    const auto* bytes = static_cast<const unsigned char*>(data);
    while (size > 0) {
        ssize_t n = ::write(fd, bytes, size);
        if (n <= 0) return false;
        bytes += n;
        size -= static_cast<std::size_t>(n);
    }
    return true;
}

}  // namespace

std::filesystem::path ArtworkCache::defaultFolder() {
    if (const char* xdg = std::getenv("XDG_CACHE_HOME"); xdg && *xdg == '/') return std::filesystem::path(xdg) / "velmorant-artwork";
    if (const char* home = std::getenv("HOME"); home && *home == '/')
        return std::filesystem::path(home) / ".cache" / "velmorant-artwork";
    return {};
}

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
    FileDescriptor file(::open((folder_ / entry).c_str(), O_RDONLY | O_CLOEXEC));
    Header header{};
    if (file.get() < 0 || !readAll(file.get(), &header, sizeof header) ||
        std::memcmp(header.magic, kMagic, sizeof kMagic) != 0)
        return nullptr;
    std::shared_ptr<Image> image = Image::create({header.pointWidth, header.pointHeight}, scale);
    if (!image || image->pixelWidth() != static_cast<int>(header.pixelWidth) ||
        image->pixelHeight() != static_cast<int>(header.pixelHeight))
        return nullptr;
    cairo_surface_t* surface = cairoSurface(*image);
    cairo_surface_flush(surface);
    unsigned char* data = cairo_image_surface_get_data(surface);
    int stride = cairo_image_surface_get_stride(surface);
    std::size_t rowBytes = std::size_t(header.pixelWidth) * 4;
    for (std::uint32_t y = 0; y < header.pixelHeight; ++y)
        if (!readAll(file.get(), data + std::size_t(y) * stride, rowBytes)) return nullptr;
    char extra;
    if (::read(file.get(), &extra, 1) != 0) return nullptr;  // longer than its header says: not ours
    cairo_surface_mark_dirty(surface);
    return image;
}

void ArtworkCache::keep(const std::string& entry, const Image& image) const {
    if (folder_.empty()) return;
    std::error_code ec;
    std::filesystem::create_directories(folder_, ec);
    std::string temporary = (folder_ / ("." + entry + ".XXXXXX")).string();
    FileDescriptor file(::mkstemp(temporary.data()));
    if (file.get() < 0) return;
    Header header{};
    std::memcpy(header.magic, kMagic, sizeof kMagic);
    header.pixelWidth = static_cast<std::uint32_t>(image.pixelWidth());
    header.pixelHeight = static_cast<std::uint32_t>(image.pixelHeight());
    header.pointWidth = image.size().width;
    header.pointHeight = image.size().height;
    cairo_surface_t* surface = cairoSurface(image);
    cairo_surface_flush(surface);
    const unsigned char* data = cairo_image_surface_get_data(surface);
    int stride = cairo_image_surface_get_stride(surface);
    bool written = writeAll(file.get(), &header, sizeof header);
    for (std::uint32_t y = 0; written && y < header.pixelHeight; ++y)
        written = writeAll(file.get(), data + std::size_t(y) * stride, std::size_t(header.pixelWidth) * 4);
    ::fchmod(file.get(), 0644);
    if (!file.close() || !written || std::rename(temporary.c_str(), (folder_ / entry).c_str()) != 0)
        std::filesystem::remove(temporary, ec);
}

}  // namespace velmorant::platform
