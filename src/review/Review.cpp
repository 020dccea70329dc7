#include "Review.h"

#include "BadInput.h"
#include "detail/RecordJson.h"

#include <cstdio>

namespace velmorant::review {
namespace {

using json = nlohmann::json;

std::string decimal(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

json parseRecord(const GalleryContents& gallery, const std::string& file) {
    try {
        return json::parse(gallery.bytes(file));
    } catch (const json::exception& e) {
        throw BadInput("gallery " + gallery.dir.string() + ": " + file + " is not readable JSON (" + e.what() + ")");
    }
}

std::vector<std::string> differingInputs(const Manifest& a, const Manifest& b) {
    std::vector<std::string> differ;
    for (const char* input : {"store", "fonts", "artwork", "program"}) {
        auto x = a.inputs.find(input), y = b.inputs.find(input);
        if (x == a.inputs.end() || y == b.inputs.end() || x->second != y->second) differ.push_back(input);
    }
    std::string options;
    if (a.options.timeZone != b.options.timeZone) options += "time zone";
    if (a.options.now != b.options.now) options += std::string(options.empty() ? "" : ", ") + "now";
    if (!options.empty()) differ.push_back("options (" + options + ")");
    return differ;
}

void comparePictureOf(ItemReview& review, const GalleryContents& newer, const GalleryContents& baseline,
                      const ManifestItem& before, const ReviewOptions& options) {
    const std::string& afterBytes = newer.bytes(review.item.picture);
    const std::string& beforeBytes = baseline.bytes(before.picture);
    // Equal files are equal pictures: the common case costs no decoding.
    if (afterBytes == beforeBytes) return;
    Picture a = decodePng(beforeBytes, baseline.dir.string() + "/" + before.picture);
    Picture b = decodePng(afterBytes, newer.dir.string() + "/" + review.item.picture);
    review.beforeWidth = a.width, review.beforeHeight = a.height, review.afterWidth = b.width, review.afterHeight = b.height;
    review.pixels = comparePictures(a, b, options.threshold);
    if (!review.pixels.marks.empty()) review.differencePng = encodePng(differencePicture(b, review.pixels));
    review.pixels.marks = {};
    if (review.pixels.sizeDiffers || review.pixels.changedPixels || review.pixels.antiAliasedPixels)
        review.beforePng = beforeBytes;
}

ItemStatus verdict(const ItemReview& r, const ReviewOptions& options) {
    if (r.pixels.sizeDiffers || r.pixels.changedPixels > options.allowedPixels || !r.fields.empty())
        return ItemStatus::Changed;
    if (r.pixels.changedPixels) return ItemStatus::WithinAllowance;
    if (r.pixels.antiAliasedPixels) return ItemStatus::AntiAliasingOnly;
    return ItemStatus::Unchanged;
}

}  // namespace

const char* statusWords(ItemStatus status) {
    switch (status) {
        case ItemStatus::Changed: return "changed";
        case ItemStatus::Added: return "added";
        case ItemStatus::Removed: return "removed";
        case ItemStatus::AntiAliasingOnly: return "anti-aliasing only";
        case ItemStatus::WithinAllowance: return "within the allowed pixels";
        case ItemStatus::Unchanged: return "unchanged";
    }
    return "";
}

std::size_t Review::count(ItemStatus status) const {
    std::size_t n = 0;
    for (const ItemReview& item : items) n += item.status == status;
    return n;
}

bool Review::hasChanges() const {
    return count(ItemStatus::Changed) + count(ItemStatus::Added) + count(ItemStatus::Removed) > 0;
}

std::string Review::summary() const {
    std::string line = "review: ";
    if (notReproducible()) line += "not reproducible (same inputs, different results): ";
    line += std::to_string(count(ItemStatus::Changed)) + " changed, " + std::to_string(count(ItemStatus::Added)) +
            " added, " + std::to_string(count(ItemStatus::Removed)) + " removed, " +
            std::to_string(count(ItemStatus::Unchanged)) + " unchanged";
    if (auto n = count(ItemStatus::AntiAliasingOnly)) line += ", " + std::to_string(n) + " anti-aliasing only";
    if (auto n = count(ItemStatus::WithinAllowance)) line += ", " + std::to_string(n) + " within the allowed pixels";
    if (hasChanges() && !differingInputs.empty()) {
        line += "; inputs differ: ";
        for (std::size_t i = 0; i < differingInputs.size(); ++i) line += (i ? ", " : "") + differingInputs[i];
    }
    return line;
}

int Review::exitStatus() const { return notReproducible() ? 3 : hasChanges() ? 1 : 0; }

void checkComparable(const Manifest& newer, const Manifest& baseline) {
    auto differ = [&](const char* what, const std::string& a, const std::string& b) {
        if (a != b)
            throw BadInput("the galleries cannot be compared: the new one is drawn with " + std::string(what) + " " + a +
                           ", the baseline with " + b);
    };
    differ("scale", decimal(newer.options.scale), decimal(baseline.options.scale));
    differ("width", decimal(newer.options.width), decimal(baseline.options.width));
    differ("locale", newer.options.locale, baseline.options.locale);
}

Review reviewGalleries(const GalleryContents& newer, const GalleryContents& baseline, const ReviewOptions& options) {
    checkComparable(newer.manifest, baseline.manifest);
    Review review{newer.dir, baseline.dir, options, {}, differingInputs(newer.manifest, baseline.manifest)};
    for (const ManifestItem& item : newer.manifest.items) {
        ItemReview r{item};
        const ManifestItem* before = baseline.manifest.find(item.id);
        if (!before) {
            r.status = ItemStatus::Added;
            review.items.push_back(std::move(r));
            continue;
        }
        if (!item.picture.empty() && !before->picture.empty()) comparePictureOf(r, newer, baseline, *before, options);
        else if (item.picture != before->picture) r.pixels.sizeDiffers = true;
        if (item.record.empty() != before->record.empty()) {
            r.fields.push_back({"card", "record", before->record.empty() ? "none" : "one", item.record.empty() ? "none" : "one"});
        } else if (!item.record.empty() && newer.bytes(item.record) != baseline.bytes(before->record)) {
            json a = parseRecord(baseline, before->record), b = parseRecord(newer, item.record);
            r.fields = item.section == "mirrors" ? compareMirrors(a, b) : compareViewRecords(a, b);
        }
        r.status = verdict(r, options);
        review.items.push_back(std::move(r));
    }
    for (const ManifestItem& item : baseline.manifest.items) {
        if (newer.manifest.find(item.id)) continue;
        ItemReview r{item, ItemStatus::Removed};
        if (!item.picture.empty()) r.beforePng = baseline.bytes(item.picture);
        review.items.push_back(std::move(r));
    }
    return review;
}

}  // namespace velmorant::review

namespace velmorant::review {
namespace {

std::string shellWord(const std::string& word) {
    if (!word.empty() && word.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-./=+,:@") ==
                             std::string::npos)
        return word;
    std::string quoted = "'";
    for (char c : word) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

}  // namespace

std::string acceptCommand(const Review& review, const std::vector<std::string>& items) {
    std::string command = "velmorant-snippet accept " + shellWord(review.newDir.string()) + " " +
                          shellWord(review.baselineDir.string());
    for (const std::string& item : items) command += " " + shellWord(item);
    return command;
}

}  // namespace velmorant::review
