#pragma once

#include "review/GalleryReader.h"
#include "review/Review.h"

#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace velmorant::cli {

// Reads --threshold (0 to 1) and --allowed-pixels (a whole number); throws UsageError naming the option.
review::ReviewOptions readReviewOptions(const std::optional<std::string>& threshold,
                                        const std::optional<std::string>& allowedPixels);

// `review NEW BASELINE`: writes NEW/review.html and NEW/review.json, prints the
// summary line and returns 0 (nothing changed), 1 (changed) or 3 (not reproducible).
int runReview(const std::vector<std::string>& positional, const review::ReviewOptions& options, std::ostream& out);

// `accept NEW BASELINE [ITEM...]`: prints what was accepted.
int runAccept(const std::vector<std::string>& positional, const review::ReviewOptions& options, std::ostream& out);

// For `gallery DIR --against BASELINE`, before anything is drawn: the baseline,
// read whole, which must be a gallery drawn at this scale, width and locale
// and not DIR itself.
review::GalleryContents readBaselineFor(const std::string& baseline, const std::string& dir, const review::Manifest& planned);

// After the gallery is drawn: reviews it against the baseline read before.
int reviewDrawnGallery(const std::filesystem::path& dir, const review::GalleryContents& baseline,
                       const review::ReviewOptions& options, std::ostream& out);

}  // namespace velmorant::cli
