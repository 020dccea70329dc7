#include "StoreHarness.h"

#include "intents/IntentViewController.h"
#include "intents/Intents.h"
#include "metrics/GroupMetrics.h"
#include "palette/Pallet.h"
#include "platform/services/Platform.h"
#include "platform/store/PlistCodec.h"
#include "snippet_ui/SleepMetricsUI.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <exception>
#include <functional>
#include <memory>

namespace velmorant::fuzz {
using intents::ExtensionContext;
using intents::IntentViewController;
using intents::Interaction;
using intents::InteractiveBehavior;
using intents::ParameterSet;
using intents::kIntentTypeNames;
using intents::makeIntent;
using metrics::GroupMetrics;
using palette::Pallet;
using snippet_ui::SleepMetricsUI;

using platform::Date;
using platform::Dictionary;
using platform::Value;

namespace {

// 2024-03-05 07:30 and 22:30 in New York.
constexpr double kMorningUnix = 1709641800;
constexpr double kEveningUnix = 1709695800;

constexpr std::string_view kUnknownIntent = "NotAnIntent";

bool sameNumber(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

// The microsecond by which a rewrite may move a date, once.
constexpr double kDateSlack = 1.5e-6;

bool same(const Value& a, const Value& b, double dateSlack = kDateSlack);

bool same(const Dictionary& a, const Dictionary& b, double dateSlack = kDateSlack) {
    if (a.size() != b.size()) return false;
    for (auto i = a.begin(), j = b.begin(); i != a.end(); ++i, ++j) {
        if (i->first != j->first || !same(i->second, j->second, dateSlack)) return false;
    }
    return true;
}

// Value equality in which NaN equals NaN (a store that held NaN must read back
// as NaN) and dates may differ by the microsecond the file format can lose.
bool same(const Value& a, const Value& b, double dateSlack) {
    if (a.kind() != b.kind()) return false;
    switch (a.kind()) {
        case Value::Kind::Real: return sameNumber(a.doubleValue(), b.doubleValue());
        case Value::Kind::Date: return std::fabs(a.date()->timeIntervalSinceDate(*b.date())) <= dateSlack;
        case Value::Kind::Dictionary: return same(*a.dictionary(), *b.dictionary(), dateSlack);
        case Value::Kind::Array: {
            const auto &x = *a.array(), &y = *b.array();
            if (x.size() != y.size()) return false;
            for (std::size_t i = 0; i < x.size(); ++i)
                if (!same(x[i], y[i], dateSlack)) return false;
            return true;
        }
        default: return a == b;
    }
}

// Where two dictionaries first differ, as a dotted path; empty when they are the same.
std::string firstDifference(const Dictionary& a, const Dictionary& b, double dateSlack, const std::string& at = "") {
    for (const auto& [key, value] : a) {
        const Value* other = b.objectForKey(key);
        const std::string path = at.empty() ? key : at + "." + key;
        if (!other) return path + " (lost)";
        if (value.dictionary() && other->dictionary()) {
            if (auto d = firstDifference(*value.dictionary(), *other->dictionary(), dateSlack, path); !d.empty())
                return d;
        } else if (!same(value, *other, dateSlack)) {
            return path;
        }
    }
    for (const auto& [key, value] : b)
        if (!a.contains(key)) return (at.empty() ? key : at + "." + key) + " (added)";
    return "";
}

class Checker {
public:
    void problem(std::string what) {
        // One report per kind of fault is enough to reproduce it.
        if (std::find(problems_.begin(), problems_.end(), what) == problems_.end()) problems_.push_back(std::move(what));
    }
    std::vector<std::string> take() { return std::move(problems_); }

    // Strings of the stores, which records and labels may show as they are.
    void rememberInputStrings(const Value& value) {
        if (const std::string* s = value.string()) {
            if (s->size() >= 3) inputStrings_.push_back(*s);
        } else if (const Dictionary* d = value.dictionary()) {
            for (const auto& [key, item] : *d) rememberInputStrings(item);
        } else if (const platform::Array* a = value.array()) {
            for (const Value& item : *a) rememberInputStrings(item);
        }
    }

    void text(const std::string& where, std::string text) {
        // What the stores held is shown as it is; only what this system made up is judged.
        for (const std::string& s : inputStrings_) {
            for (auto at = text.find(s); at != std::string::npos; at = text.find(s, at)) text.erase(at, s.size());
        }
        if (looksLikeGarbage(text)) problem(where + " shows garbage: \"" + text + "\"");
    }

    void value(const std::string& where, const Value& v) {
        switch (v.kind()) {
            case Value::Kind::String: text(where, *v.string()); break;
            case Value::Kind::Real:
            case Value::Kind::Date: {
                double x = v.kind() == Value::Kind::Real ? v.doubleValue() : v.date()->timeIntervalSince1970();
                if (!std::isfinite(x)) problem(where + " is not a finite number");
                break;
            }
            case Value::Kind::Dictionary:
                for (const auto& [key, item] : *v.dictionary()) value(where + "." + key, item);
                break;
            case Value::Kind::Array:
                for (const Value& item : *v.array()) value(where + "[]", item);
                break;
            default: break;
        }
    }

    void record(const std::string& where, const GroupMetrics::Record& r) {
        if (!r) return;
        value(where, Value(*r));
        printable(where, Value(*r));
    }

    // The program prints records and views as JSON, which takes valid UTF-8 only.
    void printable(const std::string& where, const std::string& text) {
        try {
            (void)nlohmann::json(text).dump();
        } catch (const std::exception& e) {
            problem(where + " cannot be printed: " + e.what());
        }
    }
    void printable(const std::string& where, const Value& v) {
        if (const std::string* s = v.string()) {
            printable(where, *s);
        } else if (const Dictionary* d = v.dictionary()) {
            for (const auto& [key, item] : *d) printable(where + "." + key, item), printable(where, key);
        } else if (const platform::Array* a = v.array()) {
            for (const Value& item : *a) printable(where + "[]", item);
        }
    }

private:
    std::vector<std::string> problems_;
    std::vector<std::string> inputStrings_;
};

// How deeply containers nest in a value: 0 for a scalar.
int nesting(const Value& value) {
    int deepest = 0;
    if (const Dictionary* d = value.dictionary()) {
        for (const auto& [key, item] : *d) deepest = std::max(deepest, nesting(item));
        return deepest + 1;
    }
    if (const platform::Array* a = value.array()) {
        for (const Value& item : *a) deepest = std::max(deepest, nesting(item));
        return deepest + 1;
    }
    return 0;
}

// A store file's contents as the file store reads them: absent when there are
// no bytes, empty (and reported) when they cannot be read.
std::optional<Dictionary> readStore(const char* name, const std::vector<std::uint8_t>& bytes, Checker& checker) {
    if (bytes.empty()) return std::nullopt;
    std::string error;
    std::optional<platform::PlistDocument> document = platform::parsePlist(bytes, &error);
    if (!document) {
        if (error.empty()) checker.problem(std::string(name) + " is refused without saying why");
        return std::nullopt;
    }
    // Whatever markup it hides behind, nesting past the limit is refused.
    if (nesting(Value(document->root)) > platform::kMaxPlistDepth)
        checker.problem(std::string(name) + " is read although nested deeper than " +
                        std::to_string(platform::kMaxPlistDepth) + " levels");
    // Every write-back rewrites the whole file: what the main app wrote must
    // survive it, and a second rewrite must change nothing at all.
    std::string writeError;
    auto rewrite = [&](const platform::PlistDocument& d) -> std::optional<platform::PlistDocument> {
        auto bytes = platform::serialisePlist(d.root, d.format, &writeError);
        if (!bytes) {
            checker.problem(std::string(name) + " cannot be written back: " + writeError);
            return std::nullopt;
        }
        auto again = platform::parsePlist(*bytes, &writeError);
        if (!again) checker.problem(std::string(name) + " written back cannot be read: " + writeError);
        else if (again->format != d.format) checker.problem(std::string(name) + " changes format when written back");
        return again;
    };
    if (auto once = rewrite(*document)) {
        if (!same(once->root, document->root))
            checker.problem(std::string(name) + " changes when written back, at " +
                            firstDifference(document->root, once->root, kDateSlack));
        else if (auto twice = rewrite(*once); twice && !same(twice->root, once->root, 0.0))
            checker.problem(std::string(name) + " changes again when written back twice, at " +
                            firstDifference(once->root, twice->root, 0.0));
    }
    checker.rememberInputStrings(Value(document->root));
    return std::move(document->root);
}

void install(platform::PreferencesStore& store, const std::optional<Dictionary>& contents) {
    if (!contents) return;
    for (const auto& [key, value] : *contents) store.setObject(value, key);
}

void finite(Checker& checker, const std::string& where, double x) {
    if (!std::isfinite(x)) checker.problem(where + " is not a finite number");
}

// Runs every request and returns the figures the records hold.
std::vector<float> requests(platform::Platform& platform, Checker& checker, const std::string& when) {
    GroupMetrics m(platform);
    auto at = [&](const char* name) { return when + " " + name; };
    std::vector<float> figures;
    auto take = [&](const char* name, const GroupMetrics::Record& r) {
        checker.record(at(name), r);
        if (!r) return;
        for (const auto& [key, v] : *r)
            if (v.kind() == Value::Kind::Real) figures.push_back(v.floatValue());
    };
    // The cached bank is read before this run's own sleep bank replaces it.
    take("returnPreviousSleepBank", m.returnPreviousSleepBank());
    take("requestQuality", m.requestQuality());
    m.requestQualityForSwift();
    take("requestSpO2", m.requestSpO2());
    take("requestRespRate", m.requestRespRate());
    take("requestWristTemp", m.requestWristTemp());
    take("requestReadiness", m.requestReadiness());
    take("requestOctane", m.requestOctane());
    take("requestSleepBank", m.requestSleepBank());
    take("requestConsistencyDict", m.requestConsistencyDict());
    (void)m.shouldReportPreviousDay();
    (void)m.watchDictIsValid();
    for (const char* key : {"nightHour", "requiredHours", "minimumHours", "maximumHours"})
        finite(checker, at("config ") + key, m.getVelmorantConfigValueForKey(key));
    for (long hour : {-1L, 0L, 21L, 24L})
        finite(checker, at("getFromDateForNightHour"), m.getFromDateForNightHour(hour).timeIntervalSince1970());

    // The widget mirrors are texts the widgets show as they are.
    Dictionary shared = platform.suiteNamed(platform::kAppGroupSuite)->dictionaryRepresentation();
    for (const char* name : {"Swift-HasData", "Swift-ringSleepLabel", "Swift-ringQualityLabel", "Swift-ringDeepLabel",
                             "Swift-ringBPMLabel"}) {
        if (const Value* v = shared.objectForKey(name)) checker.value(at(name), *v);
    }
    return figures;
}

// The ratings the snippets ask the palette for, over the figures of the records.
void palette(platform::Platform& platform, Checker& checker, const std::string& when, std::vector<float> figures) {
    Pallet pallet(platform);
    pallet.loadPrefs();
    figures.insert(figures.end(), {0.0f, 0.5f, 1.0f, 95.0f});
    for (float x : figures) {
        (void)pallet.colourForSpO2Reading(x);
        (void)pallet.colourForRespRateReading(x);
        (void)pallet.colourForReadyScore(x);
        (void)pallet.colourForQualityWithPercent(x);
        (void)pallet.colourForDeepSleepWithPercent(x);
        (void)pallet.efficiencyRatingColour(x);
        (void)pallet.heartRatingColourForBPM(x, 55.0f);
        (void)pallet.colourForRestingBPM(x);
        (void)pallet.colourForWorkoutBPM(x);
        (void)pallet.lightRatingColour(x);
        (void)pallet.colourForWristTempScore(pallet.wristTempScoreForValue(x, 35.6f));
        checker.text(when + " emojiForFeeling", pallet.emojiForFeeling(x));
        finite(checker, when + " starsValueForReadyPercent", pallet.starsValueForReadyPercent(x));
        finite(checker, when + " starsValueForRespRate", pallet.starsValueForRespRate(x));
    }
}

// The widgets' side of the stores: SleepMetricsUI's requests, the "Swift-"
// mirrors they write for the widgets, and the widget pictures.
void widgets(platform::Platform& platform, Checker& checker, const std::string& when) {
    SleepMetricsUI ui(platform);
    auto at = [&](const char* name) { return when + " SleepMetricsUI." + name; };
    using Request = SleepMetricsUI::Record (SleepMetricsUI::*)();
    const std::pair<const char*, Request> requests[] = {
        {"requestSpO2", &SleepMetricsUI::requestSpO2},         {"requestRespRate", &SleepMetricsUI::requestRespRate},
        {"requestWristTemp", &SleepMetricsUI::requestWristTemp}, {"requestReadiness", &SleepMetricsUI::requestReadiness},
        {"requestOctane", &SleepMetricsUI::requestOctane},     {"requestQuality", &SleepMetricsUI::requestQuality},
        {"requestLatestBedtime", &SleepMetricsUI::requestLatestBedtime},
        {"requestConsistency", &SleepMetricsUI::requestConsistency},
    };
    for (const auto& [name, request] : requests) checker.record(at(name), (ui.*request)());
    checker.record(at("requestSleepBankRings"), ui.requestSleepBankRings());

    for (void (SleepMetricsUI::*mirror)() :
         {&SleepMetricsUI::requestSpO2ForSwift, &SleepMetricsUI::requestRespRateForSwift,
          &SleepMetricsUI::requestReadinessForSwift, &SleepMetricsUI::requestOctaneForSwift,
          &SleepMetricsUI::requestLatestBedtimeForSwift, &SleepMetricsUI::requestSleepBankForSwift})
        (ui.*mirror)();
    const Dictionary shared = platform.suiteNamed(platform::kAppGroupSuite)->dictionaryRepresentation();
    for (const auto& [key, value] : shared)
        if (key.starts_with("Swift-")) checker.value(when + " " + key, value), checker.printable(when + " " + key, value);

    using Picture = platform::ImagePtr (SleepMetricsUI::*)();
    for (Picture picture :
         {&SleepMetricsUI::swiftReadinessImage, &SleepMetricsUI::swiftOctaneImage, &SleepMetricsUI::swiftSpO2Image,
          &SleepMetricsUI::swiftRespRateImage, &SleepMetricsUI::swiftWristTempImage,
          &SleepMetricsUI::swiftSleepRingsImage, &SleepMetricsUI::swiftSleepRingsAccessoryImage,
          &SleepMetricsUI::swiftSleepBankImage, &SleepMetricsUI::swiftSleepBankAccessoryImage,
          &SleepMetricsUI::swiftBedtimeImage})
        (void)(ui.*picture)();
}

void snippets(IntentViewController& controller, Checker& checker, const std::string& when) {
    std::vector<std::string_view> names(std::begin(kIntentTypeNames), std::end(kIntentTypeNames));
    names.push_back(kUnknownIntent);
    for (std::string_view name : names) {
        const std::string where = when + " " + std::string(name);
        int completions = 0;
        bool success = false;
        platform::Size size;
        controller.configureViewForParameters({}, Interaction{makeIntent(name)}, InteractiveBehavior::None,
                                              &controller.extensionContext(),
                                              [&](bool ok, const ParameterSet&, platform::Size s) {
                                                  ++completions;
                                                  success = ok;
                                                  size = s;
                                              });
        if (completions != 1 || !success) checker.problem(where + " did not complete exactly once with success");
        if (!(size.height == 180 || size.height == 420) || !std::isfinite(size.width))
            checker.problem(where + " reports an unusable size");
        for (const auto& view : controller.views().views()) {
            if (view->isHidden() || !view->text()) continue;
            checker.text(where + " " + view->name(), *view->text());
            checker.printable(where + " " + view->name(), *view->text());
        }
    }
}

}  // namespace

StoreInput decodeInput(std::span<const std::uint8_t> bytes) {
    StoreInput input;
    if (bytes.size() < 2) {
        input.shared.assign(bytes.begin(), bytes.end());
        return input;
    }
    std::size_t length = std::min<std::size_t>((std::size_t{bytes[0]} << 8) | bytes[1], bytes.size() - 2);
    input.standard.assign(bytes.begin() + 2, bytes.begin() + 2 + static_cast<std::ptrdiff_t>(length));
    input.shared.assign(bytes.begin() + 2 + static_cast<std::ptrdiff_t>(length), bytes.end());
    return input;
}

std::vector<std::uint8_t> encodeInput(const StoreInput& input) {
    std::size_t length = std::min<std::size_t>(input.standard.size(), 0xFFFF);
    std::vector<std::uint8_t> bytes{static_cast<std::uint8_t>(length >> 8), static_cast<std::uint8_t>(length & 0xFF)};
    bytes.insert(bytes.end(), input.standard.begin(), input.standard.begin() + static_cast<std::ptrdiff_t>(length));
    bytes.insert(bytes.end(), input.shared.begin(), input.shared.end());
    return bytes;
}

Date morning() { return Date::fromUnix(kMorningUnix); }
Date evening() { return Date::fromUnix(kEveningUnix); }

std::vector<std::string> checkStoreInput(std::span<const std::uint8_t> bytes, bool emptyStoresChecked) {
    Checker checker;
    try {
        StoreInput input = decodeInput(bytes);
        platform::PlatformOptions options;
        options.now = morning();
        options.timeZoneId = "America/New_York";
        options.localeId = "en_US";
        options.diagnostics = [](std::string_view) {};
        // The pictures are drawn at one pixel per point: the stores reach the
        // same drawing code, at a ninth of the pixels of the phone's scale.
        options.scale = 1;
        platform::Platform platform(std::move(options));
        const auto standard = readStore("standard preferences", input.standard, checker);
        const auto shared = readStore("shared store", input.shared, checker);
        if (emptyStoresChecked && !standard && !shared) return checker.take();
        install(*platform.standardUserDefaults(), standard);
        install(*platform.suiteNamed(platform::kAppGroupSuite), shared);

        // One controller serves both instants, as one extension process would.
        IntentViewController controller(platform, ExtensionContext{});
        controller.viewDidLoad();
        for (auto [when, instant] : {std::pair{"morning", morning()}, std::pair{"evening", evening()}}) {
            platform.setNow(instant);
            palette(platform, checker, when, requests(platform, checker, when));
            widgets(platform, checker, when);
            snippets(controller, checker, when);
        }
        // What this system wrote back must be writable as a store file. The one
        // exception is a date computed from absurd figures beyond what the
        // format holds: the file store refuses that write and reports it.
        std::string error;
        for (const auto& store : {platform.suiteNamed(platform::kAppGroupSuite), platform.standardUserDefaults()}) {
            if (!platform::serialisePlist(store->dictionaryRepresentation(), platform::PlistFormat::Binary, &error) &&
                error.find("is outside the years a store file can hold") == std::string::npos)
                checker.problem("a store cannot be written after the write-backs: " + error);
        }
    } catch (const std::exception& e) {
        checker.problem(std::string("exception: ") + e.what());
    } catch (...) {
        checker.problem("exception of unknown type");
    }
    return checker.take();
}

}  // namespace velmorant::fuzz
