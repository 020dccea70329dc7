#include "GalleryReader.h"

#include "BadInput.h"
#include "Digest.h"

namespace velmorant::review {
namespace {

namespace fs = std::filesystem;

// A name from the manifest must stay inside the gallery.
void checkInside(const std::string& file, const fs::path& dir) {
    fs::path path(file);
    bool outside = path.is_absolute() || path.empty();
    for (const auto& part : path) outside = outside || part == "..";
    if (outside) throw BadInput("gallery " + dir.string() + ": " + kManifestFile.data() + " names " + file + ", outside the gallery");
}

std::string readChecked(const fs::path& dir, const std::string& file, const std::string& digest) {
    checkInside(file, dir);
    std::error_code ec;
    if (!fs::is_regular_file(dir / file, ec)) throw BadInput("gallery " + dir.string() + ": " + file + " is missing");
    std::string bytes;
    try {
        bytes = readBytes(dir / file);
    } catch (const std::runtime_error& e) {
        throw BadInput("gallery " + dir.string() + ": " + e.what());
    }
    if (sha256(bytes) != digest)
        throw BadInput("gallery " + dir.string() + ": " + file + " is damaged (it is not the file the gallery was drawn with)");
    return bytes;
}

}  // namespace

Manifest readManifest(const fs::path& dir) {
    std::error_code ec;
    if (!fs::is_directory(dir, ec)) throw BadInput(dir.string() + ": no such gallery folder");
    if (!fs::exists(dir / kGalleryMarker, ec))
        throw BadInput(dir.string() + ": not a gallery made by velmorant-snippet (it has no " + std::string(kGalleryMarker) + ")");
    fs::path file = dir / kManifestFile;
    if (!fs::exists(file, ec))
        throw BadInput(dir.string() + ": a gallery from an earlier version, without " + std::string(kManifestFile) +
                       "; draw it again");
    return parseManifest(readBytes(file), file.string());
}

GalleryContents readGallery(const fs::path& dir) {
    GalleryContents gallery{dir, readManifest(dir), {}};
    for (const ManifestItem& item : gallery.manifest.items) {
        if (!item.picture.empty()) gallery.files[item.picture] = readChecked(dir, item.picture, item.pictureDigest);
        if (!item.record.empty()) gallery.files[item.record] = readChecked(dir, item.record, item.recordDigest);
    }
    return gallery;
}

}  // namespace velmorant::review
