#include "AtomicFiles.h"
#include "ReviewReport.h"

namespace velmorant::review {

void writeReview(const Review& review) {
    // Both made before either is written, so a failure leaves the earlier pair.
    std::string html = reviewHtml(review), json = reviewJson(review);
    writeFileAtomically(review.newDir / "review.html", html);
    writeFileAtomically(review.newDir / "review.json", json);
}

}  // namespace velmorant::review
