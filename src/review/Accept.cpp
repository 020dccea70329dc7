#include "Accept.h"

#include "AtomicFiles.h"
#include "BadInput.h"
#include "Digest.h"

#include <set>

namespace velmorant::review {
namespace {

namespace fs = std::filesystem;

bool differs(const ItemReview& r) {
    return r.status == ItemStatus::Changed || r.status == ItemStatus::Added || r.status == ItemStatus::Removed;
}

std::set<std::string> chosenItems(const GalleryContents& newer, const GalleryContents& baseline,
                                  const std::vector<std::string>& names, const ReviewOptions& options) {
    std::set<std::string> chosen;
    if (names.empty()) {
        for (const ItemReview& r : reviewGalleries(newer, baseline, options).items)
            if (differs(r)) chosen.insert(r.item.id);
        return chosen;
    }
    for (const std::string& name : names) {
        bool known = false;
        for (const Manifest* m : {&newer.manifest, &baseline.manifest})
            for (const ManifestItem& item : m->items)
                if (item.id == name || item.card == name) chosen.insert(item.id), known = true;
        if (!known)
            throw BadInput("accept: \"" + name + "\" is neither an item nor a card of either gallery (items look like "
                           "snippets/SleepSpO2Intent, widgets/swiftSpO2Image, mirrors)");
    }
    return chosen;
}

// The baseline's items with the chosen ones taken from the newer gallery, in the newer gallery's order.
Manifest merged(const Manifest& newer, const Manifest& baseline, const std::set<std::string>& chosen, bool& allNew) {
    Manifest result = baseline;
    result.items.clear();
    allNew = true;
    for (const ManifestItem& item : newer.items) {
        const ManifestItem* old = baseline.find(item.id);
        if (chosen.contains(item.id)) result.items.push_back(item);
        else if (old) result.items.push_back(*old);
        allNew = allNew && (chosen.contains(item.id) ||
                            (old && old->pictureDigest == item.pictureDigest && old->recordDigest == item.recordDigest));
    }
    for (const ManifestItem& item : baseline.items)
        if (!newer.find(item.id) && !chosen.contains(item.id)) result.items.push_back(item), allNew = false;
    // Once it holds exactly the newer gallery, it was made from what that was made from.
    if (allNew) {
        Manifest whole = newer;
        whole.items = result.items;
        return whole;
    }
    return result;
}

const std::string& bytesOf(const std::string& file, const std::string& digest, const GalleryContents& newer,
                           const GalleryContents& baseline) {
    for (const GalleryContents* g : {&newer, &baseline}) {
        auto it = g->files.find(file);
        if (it != g->files.end() && sha256(it->second) == digest) return it->second;
    }
    throw BadInput("accept: " + file + " is in neither gallery");
}

}  // namespace

std::vector<std::string> acceptItems(const fs::path& newDir, const fs::path& baselineDir, const std::vector<std::string>& names,
                                     const ReviewOptions& options, const IndexPageWriter& indexPage) {
    GalleryContents newer = readGallery(newDir);
    GalleryContents baseline = readGallery(baselineDir);
    checkComparable(newer.manifest, baseline.manifest);
    std::set<std::string> chosen = chosenItems(newer, baseline, names, options);
    bool allNew = false;
    Manifest manifest = merged(newer.manifest, baseline.manifest, chosen, allNew);

    fs::path target = fs::absolute(baselineDir).lexically_normal();
    if (!target.has_filename()) target = target.parent_path();
    std::string marker = readBytes(baselineDir / kGalleryMarker);
    replaceFolder(target, [&](const fs::path& staging) {
        writeFileAtomically(staging / kGalleryMarker, marker);
        std::string_view mirrors;
        for (const ManifestItem& item : manifest.items) {
            for (auto [file, digest] : {std::pair{&item.picture, &item.pictureDigest}, {&item.record, &item.recordDigest}}) {
                if (file->empty()) continue;
                const std::string& bytes = bytesOf(*file, *digest, newer, baseline);
                fs::create_directories((staging / *file).parent_path());
                writeFileAtomically(staging / *file, bytes);
                if (item.section == "mirrors") mirrors = bytes;
            }
        }
        writeFileAtomically(staging / kManifestFile, manifestText(manifest));
        writeFileAtomically(staging / "index.html", indexPage(manifest, mirrors));
    });
    return {chosen.begin(), chosen.end()};
}

}  // namespace velmorant::review
