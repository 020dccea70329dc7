#include "platform/graphics/detail/KeptImageFile.h"

#include "platform/core/FileDescriptor.h"
#include "platform/graphics/detail/ImageSurface.h"

#include <isa-l/crc.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace velmorant::platform {
namespace {

struct Header {
    KeptImageKind kind;
    std::uint32_t pixelWidth, pixelHeight;
    double pointWidth, pointHeight;
    double notedX, notedY, notedWidth, notedHeight;
    std::uint64_t pixelBytes;
    std::uint32_t checksum;
    std::uint32_t unused;
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

// The rows of a surface, without the padding its stride may add.
std::uint32_t rowsChecksum(const unsigned char* data, int stride, std::uint32_t rowBytes, std::uint32_t rows) {
    std::uint32_t crc = 0;
    for (std::uint32_t y = 0; y < rows; ++y) crc = crc32_gzip_refl(crc, data + std::size_t(y) * stride, rowBytes);
    return crc;
}

}  // namespace

std::filesystem::path userCacheFolder(std::string_view name) {
    if (const char* xdg = std::getenv("XDG_CACHE_HOME"); xdg && *xdg == '/') return std::filesystem::path(xdg) / name;
    if (const char* home = std::getenv("HOME"); home && *home == '/')
        return std::filesystem::path(home) / ".cache" / name;
    return {};
}

namespace {

// Reads the rows after `header` into `data` and checks them: the file must end there and match its checksum.
bool readRows(int fd, const Header& header, unsigned char* data, int stride) {
    const std::uint64_t rowBytes = std::uint64_t(header.pixelWidth) * 4;
    if (std::uint64_t(stride) == rowBytes) {
        if (!readAll(fd, data, header.pixelBytes)) return false;
    } else {
        for (std::uint32_t y = 0; y < header.pixelHeight; ++y)
            if (!readAll(fd, data + std::size_t(y) * stride, rowBytes)) return false;
    }
    char extra;
    if (::read(fd, &extra, 1) != 0) return false;  // longer than its header says: not ours
    return rowsChecksum(data, stride, static_cast<std::uint32_t>(rowBytes), header.pixelHeight) == header.checksum;
}

// The header of `file` when it is of `kind`, of `points` when given, and its pixel count agrees with its size.
bool readHeader(int fd, const KeptImageKind& kind, std::optional<Size> points, Header& header) {
    if (fd < 0 || !readAll(fd, &header, sizeof header) || header.kind != kind) return false;
    if (points && (points->width != header.pointWidth || points->height != header.pointHeight)) return false;
    return header.pixelBytes == std::uint64_t(header.pixelWidth) * 4 * header.pixelHeight;
}

Rect notedRect(const Header& header) { return {header.notedX, header.notedY, header.notedWidth, header.notedHeight}; }

}  // namespace

std::optional<KeptImage> readKeptImage(const std::filesystem::path& file, const KeptImageKind& kind, double scale,
                                       std::optional<Size> points) {
    FileDescriptor fd(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    Header header{};
    if (!readHeader(fd.get(), kind, points, header)) return std::nullopt;
    std::shared_ptr<Image> image = Image::create({header.pointWidth, header.pointHeight}, scale);
    if (!image || image->pixelWidth() != static_cast<int>(header.pixelWidth) ||
        image->pixelHeight() != static_cast<int>(header.pixelHeight))
        return std::nullopt;
    cairo_surface_t* surface = cairoSurface(*image);
    cairo_surface_flush(surface);
    if (!readRows(fd.get(), header, cairo_image_surface_get_data(surface), cairo_image_surface_get_stride(surface)))
        return std::nullopt;
    cairo_surface_mark_dirty(surface);
    return KeptImage{std::move(image), notedRect(header)};
}

std::optional<Rect> readKeptImageInto(const std::filesystem::path& file, const KeptImageKind& kind, Size points,
                                      unsigned char* data, int stride, int pixelWidth, int pixelHeight) {
    FileDescriptor fd(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    Header header{};
    if (!readHeader(fd.get(), kind, points, header)) return std::nullopt;
    if (header.pixelWidth != static_cast<std::uint32_t>(pixelWidth) ||
        header.pixelHeight != static_cast<std::uint32_t>(pixelHeight) || stride < pixelWidth * 4)
        return std::nullopt;
    if (!readRows(fd.get(), header, data, stride)) return std::nullopt;
    return notedRect(header);
}

bool writeKeptImage(const std::filesystem::path& folder, const std::string& name, const KeptImageKind& kind,
                    const Image& image, Rect noted) {
    std::error_code ec;
    std::filesystem::create_directories(folder, ec);
    std::string temporary = (folder / ("." + name + ".XXXXXX")).string();
    FileDescriptor fd(::mkstemp(temporary.data()));
    if (fd.get() < 0) return false;
    cairo_surface_t* surface = cairoSurface(image);
    cairo_surface_flush(surface);
    const unsigned char* data = cairo_image_surface_get_data(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    Header header{};
    header.kind = kind;
    header.pixelWidth = static_cast<std::uint32_t>(image.pixelWidth());
    header.pixelHeight = static_cast<std::uint32_t>(image.pixelHeight());
    header.pointWidth = image.size().width;
    header.pointHeight = image.size().height;
    header.notedX = noted.x;
    header.notedY = noted.y;
    header.notedWidth = noted.width;
    header.notedHeight = noted.height;
    const std::uint32_t rowBytes = header.pixelWidth * 4;
    header.pixelBytes = std::uint64_t(rowBytes) * header.pixelHeight;
    header.checksum = data ? rowsChecksum(data, stride, rowBytes, header.pixelHeight) : 0;
    bool written = data && writeAll(fd.get(), &header, sizeof header);
    for (std::uint32_t y = 0; written && y < header.pixelHeight; ++y)
        written = writeAll(fd.get(), data + std::size_t(y) * stride, rowBytes);
    ::fchmod(fd.get(), 0644);
    if (!fd.close() || !written || std::rename(temporary.c_str(), (folder / name).c_str()) != 0) {
        std::filesystem::remove(temporary, ec);
        return false;
    }
    return true;
}

}  // namespace velmorant::platform
