#include "Gallery.h"

#include "Arguments.h"
#include "GalleryHtml.h"
#include "GalleryManifest.h"
#include "GalleryWorkers.h"
#include "detail/ValueJson.h"
#include "WidgetPictures.h"
#include "intents/IntentViewController.h"
#include "metrics/GroupMetrics.h"
#include "platform/views/Accessibility.h"
#include "platform/graphics/Image.h"
#include "platform/graphics/PngWriter.h"
#include "platform/text/DateFormatter.h"
#include "platform/views/ViewRenderer.h"
#include "snippet_ui/SleepMetricsUI.h"

#include <fcntl.h>
#include <malloc.h>
#include <sys/stat.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <optional>

namespace velmorant::cli {
using metrics::GroupMetrics;
using snippet_ui::SleepMetricsUI;

namespace {

namespace fs = std::filesystem;
using json = nlohmann::json;

constexpr std::string_view kMarkerText = "velmorant-snippet gallery\n";

struct SnippetEntry {
    const char* intent;
    const char* title;
};

// The nine intents in the dispatcher's order, then one it does not know.
constexpr SnippetEntry kSnippets[] = {
    {"LightsOffIntent", "Lights off"},
    {"TimeAsleepIntent", "Time asleep and sleep bank"},
    {"ReadinessIntent", "Readiness"},
    {"WristTempIntent", "Wrist temperature"},
    {"SleepFuelIntent", "Sleep fuel"},
    {"SleepSpO2Intent", "Blood oxygen"},
    {"RespirationIntent", "Respiration rate"},
    {"LatestBedtimeIntent", "Latest bedtime"},
    {"SleepRingsIntent", "Sleep rings"},
    {"UnknownIntent", "Unknown intent"},
};
constexpr std::size_t kKnownSnippets = 9;

// The widget mirrors in the order a widget refresh would run them; each on
// an object of its own, as each widget makes its own.
const std::pair<const char*, void (*)(platform::Platform&)> kMirrors[] = {
    {"GroupMetrics.requestQualityForSwift", [](platform::Platform& p) { GroupMetrics(p).requestQualityForSwift(); }},
    {"SleepMetricsUI.requestSpO2ForSwift", [](platform::Platform& p) { SleepMetricsUI(p).requestSpO2ForSwift(); }},
    {"SleepMetricsUI.requestRespRateForSwift", [](platform::Platform& p) { SleepMetricsUI(p).requestRespRateForSwift(); }},
    {"SleepMetricsUI.requestReadinessForSwift", [](platform::Platform& p) { SleepMetricsUI(p).requestReadinessForSwift(); }},
    {"SleepMetricsUI.requestOctaneForSwift", [](platform::Platform& p) { SleepMetricsUI(p).requestOctaneForSwift(); }},
    {"SleepMetricsUI.requestLatestBedtimeForSwift",
     [](platform::Platform& p) { SleepMetricsUI(p).requestLatestBedtimeForSwift(); }},
    {"SleepMetricsUI.requestSleepBankForSwift", [](platform::Platform& p) { SleepMetricsUI(p).requestSleepBankForSwift(); }},
};

// The folder as one absolute path without a trailing separator.
fs::path targetPath(const fs::path& dir) {
    fs::path target = fs::absolute(dir).lexically_normal();
    if (!target.has_filename() && target.has_relative_path()) target = target.parent_path();
    return target;
}

bool isGallery(const fs::path& dir) {
    std::ifstream marker(dir / std::string(kGalleryMarker), std::ios::binary);
    std::string text(kMarkerText.size(), '\0');
    return marker.read(text.data(), static_cast<std::streamsize>(text.size())) && text == kMarkerText;
}

std::string errnoText() { return std::strerror(errno); }

void writeFile(const fs::path& path, std::string_view contents) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(contents.data(), static_cast<std::streamsize>(contents.size()));
    file.close();
    if (!file) throw std::runtime_error("cannot write " + path.string() + ": " + errnoText());
}

// A fresh hidden folder beside the gallery's place, which takes that place
// only when `commit` is called; otherwise it goes, with any folders made to
// hold it, so an interrupted gallery leaves nothing behind.
class StagingFolder {
public:
    explicit StagingFolder(const fs::path& target) : target_(target) {
        fs::path parent = target.parent_path();
        for (fs::path p = parent; !p.empty() && !fs::exists(p); p = p.parent_path()) madeParent_ = p;
        std::error_code ec;
        fs::create_directories(parent, ec);
        if (ec) throw std::runtime_error("cannot create " + parent.string() + ": " + ec.message());
        std::string pattern = (parent / ("." + target.filename().string() + ".tmp-XXXXXX")).string();
        if (!::mkdtemp(pattern.data())) {
            std::string reason = errnoText();
            removeParents();
            throw std::runtime_error("cannot create a folder beside " + target.string() + ": " + reason);
        }
        path_ = pattern;
        // mkdtemp makes it private; the gallery is as readable as any new folder.
        mode_t mask = ::umask(0);
        ::umask(mask);
        ::chmod(path_.c_str(), 0777 & ~mask);
    }
    ~StagingFolder() {
        if (committed_) return;
        std::error_code ec;
        fs::remove_all(path_, ec);
        removeParents();
    }
    StagingFolder(const StagingFolder&) = delete;
    StagingFolder& operator=(const StagingFolder&) = delete;

    const fs::path& path() const { return path_; }

    // Puts the folder in the gallery's place in one step: renamed there, or
    // exchanged with the earlier gallery, which is then removed.
    void commit() {
        if (::renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, target_.c_str(), RENAME_NOREPLACE) == 0) {
            committed_ = true;
            return;
        }
        if (errno == EEXIST || errno == ENOTEMPTY) {
            // Checked again: something else may have taken the place since.
            checkGalleryFolder(target_);
            if (::renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, target_.c_str(), RENAME_EXCHANGE) == 0) {
                std::error_code ec;
                fs::remove_all(path_, ec);  // now the earlier gallery
                committed_ = true;
                return;
            }
        }
        if (errno != EINVAL && errno != ENOSYS)
            throw std::runtime_error("cannot move the gallery into " + target_.string() + ": " + errnoText());
        replaceWithoutExchange();
    }

private:
    // For file systems that cannot exchange: the earlier gallery steps aside first.
    void replaceWithoutExchange() {
        fs::path aside = path_.string() + "-old";
        bool hadGallery = fs::exists(target_);
        if (hadGallery && ::rename(target_.c_str(), aside.c_str()) != 0)
            throw std::runtime_error("cannot replace " + target_.string() + ": " + errnoText());
        if (::rename(path_.c_str(), target_.c_str()) != 0) {
            std::string reason = errnoText();
            if (hadGallery) ::rename(aside.c_str(), target_.c_str());
            throw std::runtime_error("cannot move the gallery into " + target_.string() + ": " + reason);
        }
        committed_ = true;
        std::error_code ec;
        if (hadGallery) fs::remove_all(aside, ec);
    }

    void removeParents() {
        if (madeParent_.empty()) return;
        std::error_code ec;
        fs::remove_all(madeParent_, ec);
    }

    fs::path target_;
    fs::path path_;
    fs::path madeParent_;
    bool committed_ = false;
};

std::string languageTag(const platform::Platform& platform) { return platform.locale().languageTag(); }

std::string localTime(const platform::Platform& platform) {
    platform::DateFormatter format(platform::Locale::posix(), platform.timeZone());
    format.setDateFormat("yyyy-MM-dd HH:mm");
    return format.stringFromDate(platform.now());
}

std::string number(double value) {
    std::string text = std::to_string(value);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    return text;
}

// Hands the pages one picture's bitmaps left free in the heap back to the
// system, so that the gallery's peak is one picture's, not their scattered sum.
void releaseFreedMemory() { malloc_trim(0); }

// Blocks up to 8 MB (bands, encoder buffers, a card's bitmap at scale 3)
// come from the heap, whose free pages are handed back after every item;
// mapped apart, each would be faulted in afresh page by page, which cost as
// much system time as the drawing took. Larger ones get pages of their own.
// Fixed, as left to itself glibc raises the threshold to the largest block
// freed so far, and every later picture would stay resident until a trim.
void mapLargeBlocksApart() {
    mallopt(M_MMAP_THRESHOLD, 8 * 1024 * 1024);
    mallopt(M_TOP_PAD, 0);
}

// One snippet card with its view record, into `folder` of the gallery.
GalleryPicture drawSnippet(platform::Platform& platform, const fs::path& gallery, const std::string& folder,
                           const SnippetEntry& entry, double width) {
    std::string stem = folder + "/" + entry.intent;
    SnippetCard card = showSnippet(platform, entry.intent, width, gallery / (stem + ".png"));
    writeFile(gallery / (stem + ".json"), card.record + "\n");
    releaseFreedMemory();
    return {stem + ".png", stem + ".json", entry.title, entry.intent, card.spoken, card.size};
}

std::string widgetDescription(const WidgetEntry& entry, const platform::Image& image) {
    if (image.name() == std::optional<std::string>("WidgetWait"))
        return "Waiting for data: the picture a widget shows when there is no current night.";
    return std::string(entry.picture) + (entry.accessory ? " for the accessory widget" : " for the home-screen widget") +
           ", drawn at " + number(image.size().width) + " points.";
}

// One widget picture, into widgets/; none when it draws nothing (the
// sleep-bank pictures without data).
std::optional<GalleryPicture> drawWidgetImage(platform::Platform& platform, const fs::path& gallery,
                                              const WidgetEntry& entry) {
    SleepMetricsUI ui(platform);
    platform::ImagePtr image = (ui.*entry.draw)();
    if (!image) return std::nullopt;
    std::string file = std::string("widgets/") + entry.operation + ".png";
    std::string description = widgetDescription(entry, *image);
    std::string error;
    if (!platform::writePng(*image, gallery / file, {.description = description}, &error))
        throw std::runtime_error("cannot write " + (gallery / file).string() + ": " + error);
    GalleryPicture picture{file, "", std::string(entry.picture) + (entry.accessory ? ", accessory" : ""),
                           entry.operation, description, image->size()};
    image.reset();
    releaseFreedMemory();
    return picture;
}

// What was drawn, in the order of the items, leaving out those that drew nothing.
std::vector<GalleryPicture> drawn(std::vector<std::optional<GalleryPicture>>& slots, std::size_t from, std::size_t to) {
    std::vector<GalleryPicture> pictures;
    for (std::size_t i = from; i < to; ++i)
        if (slots[i]) pictures.push_back(std::move(*slots[i]));
    return pictures;
}

// Runs every widget mirror and returns the "Swift-" keys of the shared store.
json runMirrors(platform::Platform& platform) {
    for (const auto& [name, run] : kMirrors) {
        run(platform);
        releaseFreedMemory();  // the sleep bank's mirror draws its rings
    }
    json keys = json::object();
    for (const auto& [key, value] : platform.suiteNamed(platform::kAppGroupSuite)->dictionaryRepresentation())
        if (key.starts_with("Swift-")) keys[key] = toJson(value);
    return keys;
}

void clearStore(platform::PreferencesStore& store) {
    for (const auto& [key, value] : store.dictionaryRepresentation()) store.removeObjectForKey(key);
}

}  // namespace

MirrorTable mirrorTable(std::string title, const json& keys) {
    MirrorTable table{std::move(title), {}};
    for (const auto& [key, value] : keys.items())
        table.rows.emplace_back(key, value.is_string() ? value.get<std::string>() : value.dump());
    return table;
}

void checkGalleryFolder(const fs::path& dir) {
    if (dir.empty()) throw UsageError("gallery needs a folder to write into, not an empty name");
    fs::path target = targetPath(dir);
    if (!target.has_relative_path()) throw UsageError("gallery " + dir.string() + ": cannot replace the root folder");
    std::error_code ec;
    auto status = fs::symlink_status(target, ec);
    if (fs::is_symlink(status))
        throw UsageError("gallery " + dir.string() + ": is a symbolic link; name the folder itself");
    if (fs::exists(status)) {
        if (!fs::is_directory(status)) throw UsageError("gallery " + dir.string() + ": exists and is not a folder");
        if (!fs::is_empty(target, ec) && !isGallery(target))
            throw UsageError("gallery " + dir.string() + ": exists and is not a gallery made by velmorant-snippet (it has no " +
                             std::string(kGalleryMarker) + "); choose another folder");
    }
    // The nearest folder that exists must take new entries.
    fs::path parent = target.parent_path();
    while (!fs::exists(parent, ec) && parent.has_relative_path()) parent = parent.parent_path();
    if (!fs::is_directory(parent, ec)) throw UsageError("gallery " + dir.string() + ": " + parent.string() + " is not a folder");
    if (::access(parent.c_str(), W_OK | X_OK) != 0)
        throw UsageError("gallery " + dir.string() + ": cannot write into " + parent.string());
}

void copyStores(platform::Platform& from, platform::Platform& to) {
    auto copy = [](platform::PreferencesStore& source, platform::PreferencesStore& destination) {
        clearStore(destination);
        for (const auto& [key, value] : source.dictionaryRepresentation()) destination.setObject(value, key);
    };
    copy(*from.suiteNamed(platform::kAppGroupSuite), *to.suiteNamed(platform::kAppGroupSuite));
    copy(*from.standardUserDefaults(), *to.standardUserDefaults());
}

fs::path writeGallery(platform::Platform& platform, const GalleryOptions& options, std::ostream& progress) {
    checkGalleryFolder(options.dir);
    fs::path target = targetPath(options.dir);
    mapLargeBlocksApart();
    // Taken before drawing: the mirrors and the empty state change the stores.
    review::Manifest manifest = startManifest(platform, options.width);
    StagingFolder staging(target);
    const fs::path& gallery = staging.path();
    writeFile(gallery / std::string(kGalleryMarker), kMarkerText);

    GalleryPage page;
    page.contentLanguage = languageTag(platform);
    page.facts = "Drawn for " + localTime(platform) + " (" + platform.timeZoneId() + ") from " + options.source +
                 " · locale " + platform.localeId() + " · cards " + number(options.width) + " pt wide at scale " +
                 number(platform.screenScale());

    // Each item is drawn on its own, on as many threads as run at once; each
    // thread's platform holds a copy of the stores as they are for its section.
    GalleryWorkers workers(platform, options.threads ? options.threads : GalleryWorkers::defaultThreads());
    fs::create_directory(gallery / "snippets");
    fs::create_directory(gallery / "widgets");
    fs::create_directory(gallery / "empty");
    constexpr std::size_t kNightItems = std::size(kSnippets) + std::size(kWidgets);
    std::vector<std::optional<GalleryPicture>> slots(kNightItems);
    progress << "gallery: drawing " << std::size(kSnippets) << " snippets" << std::endl;
    workers.copyStores();
    workers.run(kNightItems, [&](platform::Platform& p, std::size_t i) {
        if (i < std::size(kSnippets)) {
            slots[i] = drawSnippet(p, gallery, "snippets", kSnippets[i], options.width);
            return;
        }
        // Only the thread taking the first widget writes here while the items are drawn.
        if (i == std::size(kSnippets))
            progress << "gallery: drawing " << std::size(kWidgets) << " widget images" << std::endl;
        slots[i] = drawWidgetImage(p, gallery, kWidgets[i - std::size(kSnippets)]);
    });
    page.snippets = drawn(slots, 0, std::size(kSnippets));
    page.widgetImages = drawn(slots, std::size(kSnippets), kNightItems);

    progress << "gallery: running " << std::size(kMirrors) << " widget mirrors" << std::endl;
    json mirrors = json::object();
    mirrors["order"] = json::array();
    for (const auto& [name, run] : kMirrors) mirrors["order"].push_back(name);
    mirrors["night"] = runMirrors(platform);

    // From here on the shared store is empty, as before the first night.
    clearStore(*platform.suiteNamed(platform::kAppGroupSuite));
    progress << "gallery: drawing " << kKnownSnippets << " snippets with an empty store" << std::endl;
    slots.assign(kKnownSnippets, std::nullopt);
    workers.copyStores();
    workers.run(kKnownSnippets, [&](platform::Platform& p, std::size_t i) {
        slots[i] = drawSnippet(p, gallery, "empty", kSnippets[i], options.width);
    });
    page.emptySnippets = drawn(slots, 0, kKnownSnippets);
    mirrors["empty"] = runMirrors(platform);

    page.mirrorsFile = "mirrors.json";
    page.mirrors = {mirrorTable("With the night's results", mirrors["night"]),
                    mirrorTable("With an empty store", mirrors["empty"])};
    writeFile(gallery / page.mirrorsFile, mirrors.dump(1) + "\n");
    addItems(manifest, page, gallery);
    writeFile(gallery / std::string(review::kManifestFile), review::manifestText(manifest));
    progress << "gallery: writing index.html" << std::endl;
    writeFile(gallery / "index.html", galleryHtml(page));
    staging.commit();
    return target / "index.html";
}

}  // namespace velmorant::cli
