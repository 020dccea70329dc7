#pragma once

#include "GalleryReader.h"
#include "PixelCompare.h"
#include "RecordCompare.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace velmorant::review {

struct ReviewOptions {
    // Colour distance a pixel may move without counting, 0 to 1 (YIQ, as a share of the largest).
    double threshold = 0.1;
    // Changed pixels a picture may have and still count as the same.
    std::uint64_t allowedPixels = 0;
};

enum class ItemStatus { Changed, Added, Removed, AntiAliasingOnly, WithinAllowance, Unchanged };

// "changed", "added", "removed", "anti-aliasing only", "within the allowed pixels", "unchanged".
const char* statusWords(ItemStatus status);

struct ItemReview {
    // As the newer gallery lists it (the baseline's for a removed item).
    ManifestItem item;
    ItemStatus status = ItemStatus::Unchanged;
    // Sizes in pixels, before and after; zero when there is no picture on that side.
    std::uint32_t beforeWidth = 0, beforeHeight = 0, afterWidth = 0, afterHeight = 0;
    // Counts and box of the pixel comparison (the marks are not kept).
    PictureDifference pixels;
    std::vector<FieldChange> fields;
    // PNG bytes: the earlier picture and the difference view; empty when there is none.
    std::string beforePng, differencePng;
};

struct Review {
    std::filesystem::path newDir, baselineDir;
    ReviewOptions options;
    std::vector<ItemReview> items;
    // What the two galleries were made from that differs: "store", "fonts", "artwork", "program", "options (now)".
    std::vector<std::string> differingInputs;

    std::size_t count(ItemStatus status) const;
    // Something a user would see differs.
    bool hasChanges() const;
    // Something differs although everything the galleries were made from is the same.
    bool notReproducible() const { return hasChanges() && differingInputs.empty(); }
    // "review: 3 changed, 1 added, 0 removed, 35 unchanged".
    std::string summary() const;
    // 0 nothing changed, 1 changed, added or removed, 3 not reproducible.
    int exitStatus() const;
};

// Throws BadInput when the galleries were drawn with different scale, width or locale.
void checkComparable(const Manifest& newer, const Manifest& baseline);

// Compares two galleries already read; draws nothing and writes nothing.
Review reviewGalleries(const GalleryContents& newer, const GalleryContents& baseline, const ReviewOptions& options);

}  // namespace velmorant::review

namespace velmorant::review {

// The command that accepts `items` of `review` into its baseline (all changed,
// added and removed ones when `items` is empty), quoted for a POSIX shell.
std::string acceptCommand(const Review& review, const std::vector<std::string>& items = {});

}  // namespace velmorant::review
