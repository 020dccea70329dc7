#pragma once

#include "Manifest.h"

#include <filesystem>
#include <map>
#include <string>

namespace velmorant::review {

// A gallery as read from its folder: the manifest and the bytes of every file
// it names, each checked against its digest.
struct GalleryContents {
    std::filesystem::path dir;
    Manifest manifest;
    // Bytes by path relative to the gallery.
    std::map<std::string, std::string> files;

    const std::string& bytes(const std::string& file) const { return files.at(file); }
};

// Reads the gallery in `dir`.
// Throws BadInput when the folder is not a gallery this program made, when it
// was made before galleries had a manifest, or when a file it names is missing
// or not what was written.
GalleryContents readGallery(const std::filesystem::path& dir);

// Only the manifest: for checking that a baseline fits before drawing anything.
Manifest readManifest(const std::filesystem::path& dir);

}  // namespace velmorant::review
