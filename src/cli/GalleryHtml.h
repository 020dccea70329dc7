#pragma once

#include "platform/core/Geometry.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmorant::cli {

// One picture on the gallery page.
struct GalleryPicture {
    // The PNG, relative to the page.
    std::string file;
    // The view record (JSON) beside it, relative to the page; empty for none.
    std::string record;
    // What the picture is ("Blood oxygen") and its program name ("SleepSpO2Intent").
    std::string title;
    std::string name;
    // The alternative text: a card's screen-reader text, a widget picture's description.
    std::string altText;
    // The size it is shown at, in points (one CSS pixel each).
    platform::Size size;
};

// Store keys and their values (as JSON text) after the widget mirrors ran.
struct MirrorTable {
    std::string title;
    std::vector<std::pair<std::string, std::string>> rows;
};

struct GalleryPage {
    // One line saying when, where and how the gallery was drawn.
    std::string facts;
    // BCP 47 tag of the language the snippets speak (the alternative texts).
    std::string contentLanguage = "en";
    std::vector<GalleryPicture> snippets;
    std::vector<GalleryPicture> emptySnippets;
    std::vector<GalleryPicture> widgetImages;
    std::vector<MirrorTable> mirrors;
    // The mirrors as JSON, relative to the page.
    std::string mirrorsFile;
};

// The page: a dark grid per section (snippets, empty state, widget images,
// widget mirrors) with captions and alternative texts; CSS inline, pictures
// by relative path, so it reads without a network.
std::string galleryHtml(const GalleryPage& page);


}  // namespace velmorant::cli
