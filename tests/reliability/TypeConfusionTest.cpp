// A store key of each way the system reads keys, given values of every wrong
// kind, on top of the demo stores: no exception, no garbage in any record,
// mirror or snippet, and a value that cannot be read counts exactly as a
// missing one. Keys read by the same code as one here would add nothing.
#include "ReliabilityTest.h"

#include "intents/IntentViewController.h"
#include "metrics/GroupMetrics.h"
#include "palette/Pallet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace velmorant;
using intents::ExtensionContext;
using intents::IntentViewController;
using intents::Interaction;
using intents::InteractiveBehavior;
using intents::ParameterSet;
using intents::kIntentTypeNames;
using intents::makeIntent;
using metrics::GroupMetrics;
using palette::Pallet;
using platform::Date;
using platform::Dictionary;
using platform::Value;
using velmorant::testing::kEvening;
using velmorant::testing::kMorning;

// How the system reads a key, which says what a value of a wrong kind must give.
enum class Reads {
    Number,      // Foundation reading: text gives its leading number, a boolean 0 or 1; else missing
    Copied,      // a number a record takes over as it is: only a finite integer or real within float range
    Dictionary,  // anything else is missing
    Date,        // anything else is missing
    DayKey,      // a string equal to the current day key; anything else is missing
    Triple,      // "a|b|c" text; anything else reads as missing
    Text,        // a string shown as it is; anything else is missing
    Bool,        // reads as either NO or YES
    Presence,    // on by being there, whatever the value
    Preference,  // the palette's own reading (no range check): only the general checks apply
};

struct KeyPath {
    bool standard;     // the extension's preferences rather than the shared store
    std::string path;  // dotted, from the top of the store
    Reads reads;
};

struct WrongKind {
    const char* name;
    Value value;
};

const std::vector<WrongKind>& wrongKinds() {
    const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
    static const std::vector<WrongKind> kinds = {
        {"Text", Value("abc")},
        {"EmptyText", Value("")},
        {"Array", Value(platform::Array{Value(1), Value("2")})},
        {"Dictionary", Value(Dictionary{{"key", Value(1)}})},
        {"Date", Value(Date::fromUnix(1709600000))},
        {"Data", Value(platform::Data{0x01, 0xFF})},
        {"True", Value(true)},
        {"False", Value(false)},
        {"NaN", Value(nan)},
        {"PlusInfinity", Value(inf)},
        {"MinusInfinity", Value(-inf)},
        {"HugeDouble", Value(1e300)},
        {"HugeFloat", Value(3.0e38)},
        {"HugeInteger", Value(std::numeric_limits<long long>::max())},
        {"HugeNegative", Value(-1e9)},
        {"MinusOne", Value(-1)},
    };
    return kinds;
}

enum class Expect { Missing, Zero, One, FalseOrTrue, True, Readable };

Expect expectationFor(Reads reads, const WrongKind& kind) {
    const Value& v = kind.value;
    const bool text = v.kind() == Value::Kind::String;
    switch (reads) {
        case Reads::Dictionary: return v.dictionary() ? Expect::Readable : Expect::Missing;
        case Reads::Date: return v.date() ? Expect::Readable : Expect::Missing;
        case Reads::DayKey:
        case Reads::Triple: return Expect::Missing;
        case Reads::Text: return text ? Expect::Readable : Expect::Missing;
        case Reads::Bool: return Expect::FalseOrTrue;
        case Reads::Presence: return Expect::True;
        case Reads::Preference: return Expect::Readable;
        case Reads::Copied:
            if (v.kind() != Value::Kind::Integer && v.kind() != Value::Kind::Real) return Expect::Missing;
            [[fallthrough]];
        case Reads::Number:
            if (text) return Expect::Zero;  // neither test text starts with a number
            if (v.kind() == Value::Kind::Boolean) return v.boolValue() ? Expect::One : Expect::Zero;
            if (!v.isNumber()) return Expect::Missing;
            // Not a number, or beyond single precision: unreadable.
            if (!std::isfinite(v.doubleValue()) || std::fabs(v.doubleValue()) > std::numeric_limits<float>::max())
                return Expect::Missing;
            return Expect::Readable;
    }
    return Expect::Readable;
}

// Sets (or with none, removes) the value at a dotted path, making dictionaries on the way.
void put(Dictionary& root, std::string_view path, const Value& value) {
    auto dot = path.find('.');
    if (dot == std::string_view::npos) {
        root.setObject(value, path);
        return;
    }
    const std::string head(path.substr(0, dot));
    const Value* inner = root.objectForKey(head);
    Dictionary child = inner && inner->dictionary() ? *inner->dictionary() : Dictionary();
    put(child, path.substr(dot + 1), value);
    root.setObject(Value(std::move(child)), head);
}

void putInStore(platform::PreferencesStore& store, const std::string& path, const Value& value) {
    const std::string top = path.substr(0, path.find('.'));
    Dictionary root;
    if (Value current = store.objectForKey(top); !current.isNone()) root.setObject(current, top);
    put(root, path, value);
    const Value* changed = root.objectForKey(top);
    store.setObject(changed ? *changed : Value(), top);
}

// Everything the system shows or writes back, at both instants, as one dictionary.
class StoreRun {
public:
    // The demo stores, with a fixed wake time on every weekday and the watch's stages switch.
    explicit StoreRun(const KeyPath* key = nullptr, std::optional<Value> value = std::nullopt) {
        platform_ = velmorant::testing::platformAt(kMorning, std::nullopt, [](std::string_view) {});
        demo::installDemoStores(*platform_);
        auto shared = platform_->suiteNamed(platform::kAppGroupSuite);
        for (int n = 0; n < 7; ++n) {
            putInStore(*shared, "velmorantConfig.WakeFixed" + std::to_string(n), Value(true));
            putInStore(*shared, "velmorantConfig.WakeTime" + std::to_string(n), Value(25200 + 60 * n));
        }
        putInStore(*shared, "watchTrackDict.showStages", Value(true));

        auto apply = [&] {
            if (!key) return;
            auto store = key->standard ? platform_->standardUserDefaults() : shared;
            putInStore(*store, key->path, value.value_or(Value()));
        };
        // Applied again in the evening so that it reaches the cache the morning wrote.
        apply();
        show("morning");
        platform_->setNow(kEvening);
        apply();
        show("evening");
    }

    const Dictionary& outcome() const { return outcome_; }

private:
    void keep(const std::string& name, Value value) { outcome_.setObject(std::move(value), name); }

    void show(const std::string& when) {
        GroupMetrics m(*platform_);
        keep(when + ".returnPreviousSleepBank", m.returnPreviousSleepBank());
        keep(when + ".requestQuality", m.requestQuality());
        m.requestQualityForSwift();
        keep(when + ".requestSpO2", m.requestSpO2());
        keep(when + ".requestRespRate", m.requestRespRate());
        keep(when + ".requestWristTemp", m.requestWristTemp());
        keep(when + ".requestReadiness", m.requestReadiness());
        keep(when + ".requestOctane", m.requestOctane());
        keep(when + ".requestSleepBank", m.requestSleepBank());
        keep(when + ".requestConsistencyDict", m.requestConsistencyDict());
        keep(when + ".shouldReportPreviousDay", m.shouldReportPreviousDay());
        keep(when + ".watchDictIsValid", m.watchDictIsValid());
        Dictionary shared = platform_->suiteNamed(platform::kAppGroupSuite)->dictionaryRepresentation();
        for (const char* mirror : {"Swift-HasData", "Swift-ringSleepLabel", "Swift-ringQualityLabel",
                                   "Swift-ringDeepLabel", "Swift-ringBPMLabel"})
            keep(when + "." + mirror, shared.objectForKey(mirror) ? *shared.objectForKey(mirror) : Value());

        Pallet pallet(*platform_);
        pallet.loadPrefs();
        keep(when + ".pallet",
             Dictionary{{"dark", pallet.isDarkTheme()},
                        {"miles", pallet.miles()},
                        {"hues", platform::Array{pallet.hue1(), pallet.hue2(), pallet.hue3(), pallet.hue4(), pallet.hue5()}},
                        {"thresholds", platform::Array{pallet.maxHeartRate(), pallet.restingElevated(),
                                                       pallet.restingHigh(), pallet.restingNormal(), pallet.restingLow(),
                                                       pallet.restingVeryLow(), pallet.workoutPercent1(),
                                                       pallet.workoutPercent2(), pallet.workoutPercent3(),
                                                       pallet.workoutPercent4(), pallet.workoutPercent5()}},
                        {"wristTempScore", pallet.wristTempScoreForValue(35.9f, 35.6f)}});

        IntentViewController controller(*platform_, ExtensionContext{});
        controller.viewDidLoad();
        std::vector<std::string_view> intents(std::begin(kIntentTypeNames), std::end(kIntentTypeNames));
        intents.push_back("NotAnIntent");
        for (std::string_view intent : intents) {
            Dictionary snippet;
            controller.configureViewForParameters({}, Interaction{makeIntent(intent)}, InteractiveBehavior::None,
                                                  &controller.extensionContext(),
                                                  [&](bool ok, const ParameterSet&, platform::Size size) {
                                                      snippet.setObject(Value(ok), "success");
                                                      snippet.setObject(Value(size.height), "height");
                                                  });
            for (const auto& view : controller.views().views()) {
                if (!view->isHidden() && view->text()) snippet.setObject(Value(*view->text()), view->name());
            }
            keep(when + "." + std::string(intent), snippet);
        }
    }

    std::unique_ptr<platform::Platform> platform_;
    Dictionary outcome_;
};

// The entries in which two outcomes differ, for the failure message.
std::string differences(const Dictionary& got, const Dictionary& want) {
    std::string out;
    for (const auto& [key, value] : want) {
        const Value* other = got.objectForKey(key);
        if (!other || !(*other == value)) out += " " + key;
    }
    for (const auto& [key, value] : got)
        if (!want.contains(key)) out += " " + key + " (only here)";
    return out;
}

// One key for each way keys are read.
std::vector<KeyPath> keyPaths() {
    // A night of the sleep bank, kept under its day key.
    platform::PlatformOptions options;
    options.now = kMorning;
    options.timeZoneId = "America/New_York";
    platform::Platform p(std::move(options));
    const demo::DemoStores stores = demo::makeDemoStores(p);
    std::string night;
    for (const auto& [key, value] : *stores.shared.objectForKey("bankDict")->dictionary())
        if (key.size() == 8 && std::all_of(key.begin(), key.end(), ::isdigit)) night = key;

    return {
        {false, "bankDict", Reads::Dictionary},                        // a dictionary at the top of the store
        {false, "bankDict.nightHour", Reads::Number},                  // the day key's night hour
        {false, "bankDict.spO2Dict", Reads::Dictionary},               // a vital's dictionary
        {false, "bankDict.spO2Dict.key", Reads::DayKey},               // the day a vital belongs to
        {false, "bankDict.spO2Dict.averageSpO2", Reads::Number},       // a figure in a dictionary
        {false, "bankDict.readyDict.key", Reads::DayKey},              // readiness falls back to the watch
        {false, "bankDict.startDate", Reads::Date},                    // consistency's start
        {false, "bankDict." + night, Reads::Number},                   // a night of the sleep bank
        {false, "watchTrackDict.rawSynchTime", Reads::Date},           // the watch's last sync
        {false, "watchTrackDict.rawRingRating", Reads::Triple},        // the rings' "a|b|c" texts
        {false, "watchTrackDict.showStages", Reads::Presence},         // a switch that is on by being there
        {false, "watchTrackDict.rawSleepTime", Reads::Number},         // the rings' own reading of sleep time
        {false, "velmorantConfig.nightHour", Reads::Number},           // a configuration value
        {false, "velmorantConfig.WakeFixed0", Reads::Presence},        // a configuration switch
        {false, "lastConsistency", Reads::Bool},                       // a boolean at the top of the store
        {false, "cachedSleepBankUpdate", Reads::Date},                 // when the cache was written
        {false, "cachedSleepBank.bankBalance", Reads::Copied},         // a cached figure taken over as it is
        {false, "cachedSleepBank.bedTime", Reads::Date},               // a cached date
        {false, "cachedSleepBank.latestBedTime", Reads::Text},         // a cached text
        {false, "Hue1", Reads::Preference},                            // a palette value in the shared store
        {true, "darkTheme6", Reads::Bool},                             // a palette switch
        {true, "nightHour11", Reads::Preference},                      // the palette's night hour
        {true, "Hue1", Reads::Preference},                             // a rating hue
        {true, "maxHeartRate", Reads::Preference},                     // a heart-rate threshold
    };
}

void PrintTo(const KeyPath& key, std::ostream* out) { *out << (key.standard ? "standard " : "shared ") << key.path; }

class TypeConfusion : public ::testing::TestWithParam<KeyPath> {};

TEST_P(TypeConfusion, WrongKindsReadAsMissingOrAsWhatCanBeReadAndShowNoGarbage) {
    const KeyPath& key = GetParam();
    const Dictionary missing = StoreRun(&key, Value()).outcome();
    auto with = [&](Value v) { return StoreRun(&key, std::move(v)).outcome(); };
    std::optional<Dictionary> zero, one, no, yes;

    for (const WrongKind& kind : wrongKinds()) {
        SCOPED_TRACE(key.path + " = " + kind.name);
        std::optional<Dictionary> got;
        EXPECT_NO_THROW(got = StoreRun(&key, kind.value).outcome());
        if (!got) continue;
        std::vector<std::string> garbage;
        fuzz::findGarbage("", Value(*got), garbage);
        for (const std::string& g : garbage) ADD_FAILURE() << g;

        switch (expectationFor(key.reads, kind)) {
            case Expect::Missing: EXPECT_TRUE(*got == missing) << "differs from missing in" << differences(*got, missing); break;
            case Expect::Zero:
                if (!zero) zero = with(Value(0));
                EXPECT_TRUE(*got == *zero) << "differs from 0 in" << differences(*got, *zero);
                break;
            case Expect::One:
                if (!one) one = with(Value(1));
                EXPECT_TRUE(*got == *one) << "differs from 1 in" << differences(*got, *one);
                break;
            case Expect::FalseOrTrue:
                if (!no) no = with(Value(false)), yes = with(Value(true));
                EXPECT_TRUE(*got == *no || *got == *yes) << "reads as neither NO nor YES";
                break;
            case Expect::True:
                if (!yes) yes = with(Value(true));
                EXPECT_TRUE(*got == *yes) << "differs from present in" << differences(*got, *yes);
                break;
            case Expect::Readable: break;
        }
    }
}

std::string testName(const ::testing::TestParamInfo<KeyPath>& info) {
    std::string name = (info.param.standard ? "standard_" : "") + info.param.path;
    std::replace_if(name.begin(), name.end(), [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(StoreKeys, TypeConfusion, ::testing::ValuesIn(keyPaths()), testName);

// The base itself must show data, or every comparison above would be between empty states.
TEST(TypeConfusionBase, DemoStoresShowEveryRecord) {
    const Dictionary outcome = StoreRun().outcome();
    for (const char* request : {"morning.requestQuality", "morning.requestSpO2", "morning.requestRespRate",
                                "morning.requestWristTemp", "morning.requestReadiness", "morning.requestOctane",
                                "morning.requestSleepBank", "morning.requestConsistencyDict",
                                "evening.returnPreviousSleepBank"})
        EXPECT_TRUE(outcome.objectForKey(request) && outcome.objectForKey(request)->dictionary()) << request;
    std::vector<std::string> garbage;
    fuzz::findGarbage("", Value(outcome), garbage);
    EXPECT_TRUE(garbage.empty()) << garbage.front();
}

}  // namespace
