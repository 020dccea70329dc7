#pragma once

#include "Review.h"

#include <filesystem>
#include <string>

namespace velmorant::review {

// review.json: the verdict, the differing inputs and every item with its status,
// pixel counts and changed fields in words.
std::string reviewJson(const Review& review);

// review.html: changed items first, grouped by card, each with before, after,
// difference, side-by-side and slider views, its changed fields and how to
// accept it; then added, removed, and the rest collapsed. Styles, scripts and
// the earlier and difference pictures are inside the page; the newer pictures
// are named relative to the gallery it is written into.
std::string reviewHtml(const Review& review);

// Writes review.html and review.json into the newer gallery, each complete or not at all.
void writeReview(const Review& review);

}  // namespace velmorant::review
