#pragma once

#include "Manifest.h"
#include "Review.h"

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace velmorant::review {

// The gallery's index page for a manifest and its mirrors table (mirrors.json's text, empty for none).
using IndexPageWriter = std::function<std::string(const Manifest&, std::string_view mirrors)>;

// Copies items of the gallery `newDir` into the gallery `baselineDir`: those
// named (an item such as "snippets/SleepSpO2Intent", or a card such as
// "SleepSpO2Intent" for all of its items), or every changed, added and
// removed one when none are named. An item the newer gallery lacks is
// removed from the baseline. The baseline is replaced in one step and stays a
// gallery: its manifest and index page describe what it now holds. Returns
// the items accepted. Throws BadInput, leaving both galleries as they were,
// for folders that are not galleries, damaged files, galleries that cannot be
// compared, or names that are neither an item nor a card of either.
std::vector<std::string> acceptItems(const std::filesystem::path& newDir, const std::filesystem::path& baselineDir,
                                     const std::vector<std::string>& names, const ReviewOptions& options,
                                     const IndexPageWriter& indexPage);

}  // namespace velmorant::review
