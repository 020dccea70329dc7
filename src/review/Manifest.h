#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace velmorant::review {

// The file in a gallery that says what it holds and what it was made from.
inline constexpr std::string_view kManifestFile = "manifest.json";
// The file that marks a folder as a gallery this program made.
inline constexpr std::string_view kGalleryMarker = ".velmorant-gallery";
inline constexpr int kManifestFormat = 1;

// One picture (with its view record, if any) or the widget mirrors' table.
struct ManifestItem {
    // Its path without extension: "snippets/SleepSpO2Intent", "widgets/swiftSpO2Image", "mirrors".
    std::string id;
    // "snippets", "empty", "widgets" or "mirrors".
    std::string section;
    // The snippet it belongs with; its empty state and widget pictures share it.
    std::string card;
    std::string title;
    std::string name;
    // Files relative to the gallery, each with its SHA-256; empty for none.
    std::string picture, pictureDigest;
    std::string record, recordDigest;
    // The alternative text and size in points, as the index page shows them.
    std::string alt;
    double width = 0, height = 0;
};

// How the gallery was drawn. Galleries with different scale, width or locale show
// different things by design and are not compared.
struct DrawingOptions {
    double scale = 3, width = 390;
    std::string locale, timeZone, now;
};

struct Manifest {
    DrawingOptions options;
    // Digests of what the pictures were made from: "store", "fonts", "artwork", "program".
    std::map<std::string, std::string> inputs;
    // The index page's line about the run and the language its texts are in.
    std::string facts, language;
    std::vector<ManifestItem> items;

    const ManifestItem* find(std::string_view id) const;
};

// manifest.json's text, as a gallery holds it.
std::string manifestText(const Manifest& manifest);
// Throws BadInput naming `where` when the text is not readable JSON or not a manifest this program writes.
Manifest parseManifest(std::string_view text, const std::string& where);

}  // namespace velmorant::review
