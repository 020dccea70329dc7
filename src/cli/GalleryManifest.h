#pragma once

#include "GalleryHtml.h"
#include "platform/services/Platform.h"
#include "review/Manifest.h"

#include <filesystem>
#include <string_view>

namespace velmorant::cli {

// What a gallery is about to be drawn from: the options and the digests of the
// stores (as they are before the gallery changes them), fonts, artwork and
// this program's build. Holds no items yet.
review::Manifest startManifest(platform::Platform& platform, double width);

// Lists every picture and record of `page` (files relative to `gallery`, where
// they are already written) with their digests and the cards they belong to.
void addItems(review::Manifest& manifest, const GalleryPage& page, const std::filesystem::path& gallery);

// The index page's contents for a gallery's manifest and its mirrors table.
// `mirrors` is mirrors.json's text, empty for none.
GalleryPage pageFromManifest(const review::Manifest& manifest, std::string_view mirrors);

}  // namespace velmorant::cli
