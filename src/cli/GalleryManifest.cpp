#include "GalleryManifest.h"

#include "Gallery.h"
#include "detail/ValueJson.h"
#include "review/Digest.h"
#include "review/Inputs.h"

#include <map>

namespace velmorant::cli {
namespace {

namespace fs = std::filesystem;
using json = nlohmann::json;

constexpr std::string_view kMirrorsCard = "Widget mirrors";

// The snippet a widget picture shows the same figures as.
std::string cardOfWidget(const std::string& operation) {
    static const std::map<std::string, std::string, std::less<>> cards = {
        {"swiftSleepRingsImage", "SleepRingsIntent"},  {"swiftSleepRingsAccessoryImage", "SleepRingsIntent"},
        {"swiftSleepBankImage", "TimeAsleepIntent"},   {"swiftSleepBankAccessoryImage", "TimeAsleepIntent"},
        {"swiftBedtimeImage", "LatestBedtimeIntent"},  {"swiftReadinessImage", "ReadinessIntent"},
        {"swiftOctaneImage", "SleepFuelIntent"},       {"swiftSpO2Image", "SleepSpO2Intent"},
        {"swiftRespRateImage", "RespirationIntent"},   {"swiftWristTempImage", "WristTempIntent"},
    };
    auto it = cards.find(operation);
    return it == cards.end() ? operation : it->second;
}

std::string storeDigest(platform::Platform& platform) {
    json stores = json::object();
    for (auto [name, store] : {std::pair{"shared", platform.suiteNamed(platform::kAppGroupSuite)},
                               {"standard", platform.standardUserDefaults()}}) {
        json keys = json::object();
        for (const auto& [key, value] : store->dictionaryRepresentation()) keys[key] = toJson(value);
        stores[name] = keys;
    }
    return review::sha256(stores.dump());
}

std::string stem(const std::string& file) { return file.substr(0, file.rfind('.')); }

std::string digestOf(const fs::path& gallery, const std::string& file) {
    return file.empty() ? "" : review::sha256(review::readBytes(gallery / file));
}

std::vector<GalleryPicture> picturesOf(const review::Manifest& manifest, std::string_view section) {
    std::vector<GalleryPicture> pictures;
    for (const review::ManifestItem& item : manifest.items)
        if (item.section == section)
            pictures.push_back({item.picture, item.record, item.title, item.name, item.alt, {item.width, item.height}});
    return pictures;
}

}  // namespace

review::Manifest startManifest(platform::Platform& platform, double width) {
    review::Manifest manifest;
    manifest.options = {platform.screenScale(), width, platform.localeId(), platform.timeZoneId(), isoUtc(platform.now())};
    manifest.inputs = {{"store", storeDigest(platform)},
                       {"fonts", review::fontsDigest(platform.resourceDir() / "fonts" / "fonts.conf")},
                       {"artwork", review::folderDigest(platform.resourceDir())},
                       {"program", review::programDigest()}};
    return manifest;
}

void addItems(review::Manifest& manifest, const GalleryPage& page, const fs::path& gallery) {
    manifest.facts = page.facts;
    manifest.language = page.contentLanguage;
    for (auto [section, pictures] : {std::pair{"snippets", &page.snippets}, {"empty", &page.emptySnippets},
                                     {"widgets", &page.widgetImages}}) {
        for (const GalleryPicture& p : *pictures) {
            std::string card = std::string(section) == "widgets" ? cardOfWidget(p.name) : p.name;
            manifest.items.push_back({stem(p.file), section, card, p.title, p.name, p.file, digestOf(gallery, p.file),
                                      p.record, digestOf(gallery, p.record), p.altText, p.size.width, p.size.height});
        }
    }
    manifest.items.push_back({stem(page.mirrorsFile), "mirrors", std::string(kMirrorsCard), std::string(kMirrorsCard),
                              page.mirrorsFile, "", "", page.mirrorsFile, digestOf(gallery, page.mirrorsFile), "", 0, 0});
}

GalleryPage pageFromManifest(const review::Manifest& manifest, std::string_view mirrorsText) {
    const json mirrors = mirrorsText.empty() ? json::object() : json::parse(mirrorsText);
    GalleryPage page;
    page.facts = manifest.facts;
    page.contentLanguage = manifest.language;
    page.snippets = picturesOf(manifest, "snippets");
    page.emptySnippets = picturesOf(manifest, "empty");
    page.widgetImages = picturesOf(manifest, "widgets");
    for (const review::ManifestItem& item : manifest.items)
        if (item.section == "mirrors") page.mirrorsFile = item.record;
    page.mirrors = {mirrorTable("With the night's results", mirrors.value("night", json::object())),
                    mirrorTable("With an empty store", mirrors.value("empty", json::object()))};
    return page;
}

}  // namespace velmorant::cli
