#include "ReviewCommands.h"

#include "Arguments.h"
#include "Gallery.h"
#include "GalleryManifest.h"
#include "review/Accept.h"
#include "review/BadInput.h"
#include "review/ReviewReport.h"

#include <charconv>

namespace velmorant::cli {
namespace {

namespace fs = std::filesystem;

// Anything that stops a review is bad input to CI, never "changed".
template <typename Work>
auto asUsageError(Work work) {
    try {
        return work();
    } catch (const UsageError&) {
        throw;
    } catch (const std::exception& e) {
        throw UsageError(e.what());
    }
}

void needTwoGalleries(const std::vector<std::string>& positional, const char* command, bool itemsAllowed) {
    if (positional.size() < 2 || (!itemsAllowed && positional.size() > 2))
        throw UsageError(std::string(command) + " needs NEW BASELINE, two gallery folders" +
                         (itemsAllowed ? " (then any items)" : "") + " (see `" + command + " --help`)");
}

int finish(const review::Review& result, std::ostream& out) {
    review::writeReview(result);
    out << result.summary() << '\n';
    return result.exitStatus();
}

}  // namespace

review::ReviewOptions readReviewOptions(const std::optional<std::string>& threshold,
                                        const std::optional<std::string>& allowedPixels) {
    review::ReviewOptions options;
    if (threshold) {
        const std::string& t = *threshold;
        auto [end, ec] = std::from_chars(t.data(), t.data() + t.size(), options.threshold);
        if (ec != std::errc() || end != t.data() + t.size() || !(options.threshold >= 0 && options.threshold <= 1))
            throw UsageError("--threshold must be a number from 0 to 1, not \"" + t + "\"");
    }
    if (allowedPixels) {
        const std::string& a = *allowedPixels;
        auto [end, ec] = std::from_chars(a.data(), a.data() + a.size(), options.allowedPixels);
        if (ec != std::errc() || end != a.data() + a.size() || a.empty())
            throw UsageError("--allowed-pixels must be a whole number of pixels, 0 or more, not \"" + a + "\"");
    }
    return options;
}

int runReview(const std::vector<std::string>& positional, const review::ReviewOptions& options, std::ostream& out) {
    needTwoGalleries(positional, "review", false);
    return asUsageError([&] {
        review::GalleryContents newer = review::readGallery(positional[0]);
        review::GalleryContents baseline = review::readGallery(positional[1]);
        return finish(review::reviewGalleries(newer, baseline, options), out);
    });
}

int runAccept(const std::vector<std::string>& positional, const review::ReviewOptions& options, std::ostream& out) {
    needTwoGalleries(positional, "accept", true);
    std::vector<std::string> names(positional.begin() + 2, positional.end());
    auto accepted = asUsageError([&] {
        return review::acceptItems(positional[0], positional[1], names, options,
                                   [](const review::Manifest& manifest, std::string_view mirrors) {
                                       return galleryHtml(pageFromManifest(manifest, mirrors));
                                   });
    });
    out << "accepted " << accepted.size() << (accepted.size() == 1 ? " item" : " items") << " into " << positional[1];
    for (const std::string& item : accepted) out << (&item == &accepted.front() ? ": " : ", ") << item;
    out << '\n';
    return 0;
}

review::GalleryContents readBaselineFor(const std::string& baseline, const std::string& dir, const review::Manifest& planned) {
    return asUsageError([&] {
        std::error_code ec;
        if (fs::equivalent(baseline, dir, ec))
            throw UsageError("--against " + baseline + ": the baseline cannot be the gallery being drawn");
        review::GalleryContents contents = review::readGallery(baseline);
        review::checkComparable(planned, contents.manifest);
        return contents;
    });
}

int reviewDrawnGallery(const fs::path& dir, const review::GalleryContents& baseline, const review::ReviewOptions& options,
                       std::ostream& out) {
    return asUsageError([&] { return finish(review::reviewGalleries(review::readGallery(dir), baseline, options), out); });
}

}  // namespace velmorant::cli
