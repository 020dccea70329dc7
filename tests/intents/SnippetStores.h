#pragma once

#include "intents/IntentViewController.h"
#include "platform/services/Platform.h"

#include "TempDir.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

namespace velmorant::testing {

using platform::Date;
using platform::Dictionary;
using platform::Value;

// 2024-03-05 07:30 in New York; the night began at 21:00 on the 4th.
inline const Date kMorning = Date::fromUnix(1709641800);
inline const Date kNightStart = Date::fromUnix(1709604000);
inline constexpr const char* kTonight = "20240305";

// A night of results as the main app leaves them, every per-day figure filed
// under `dayKey`; `watch` adds the watch's own figures for tonight.
inline Dictionary sharedStore(std::string_view dayKey, bool watch = true) {
    const std::string key(dayKey);
    Dictionary bank{
        {"nightHour", Value(21)}, {"requiredHours", Value(8.0)}, {"medianWake", Value(36000.0)},
        {"averageWake", Value(35400.0)}, {"averageEfficiency", Value(91.0)},
        {"spO2Dict", Dictionary{{"key", key}, {"averageSpO2", 95.4}, {"minSpO2", 90.0}, {"maxSpO2", 99.0},
                                {"averageSpO27", 95.1}, {"minSpO27", 89.0}, {"maxSpO27", 99.0}}},
        {"respRateDict", Dictionary{{"key", key}, {"averageRespRate", 14.26}, {"minRespRate", 12.1},
                                    {"maxRespRate", 17.8}, {"averageRespRate7", 14.0}, {"minRespRate7", 11.8},
                                    {"maxRespRate7", 18.2}}},
        {"wristTempKey", key}, {"wristTempScore", 4.4}, {"wristTempTodayValue", 35.92}, {"wristTempAverage28", 35.61},
        {"readyDict", Dictionary{{"key", key}, {"hrvAverage", 45.0}, {"hrvTodayVal", 48.0}, {"bpmAverage", 57.0},
                                 {"bpmTodayVal", 55.0}}},
        {"octaneDict", Dictionary{{"key", key}, {"hrvAverage", 41.0}, {"hrvTodayVal", 44.0}, {"bpmAverage", 52.0},
                                  {"bpmTodayVal", 51.0}}},
        {"20240228", 26100.0}, {"20240229", 27900.0}, {"20240301", 25200.0},
        {"20240302", 29100.0}, {"20240303", 27000.0}, {"20240304", 28200.0},
    };
    Dictionary store{{"bankDict", bank}, {"readyStars", false},
                     {"velmorantConfig", Dictionary{{"nightHour", Value(21)}, {"requiredHours", Value(8.0)},
                                                    {"minimumHours", Value(7.0)}, {"maximumHours", Value(9.5)}}}};
    if (watch)
        store.setObject(Dictionary{{"rawSynchTime", kNightStart.dateByAddingTimeInterval(10.5 * 3600)},
                                   {"rawRingRating", "0.82|1.05|0.96"}, {"rawRingValues", "5400|6300|52"},
                                   {"rawSleepTime", Value(27360.0)}, {"rawSleepBankTime", Value(27360.0)},
                                   {"rawHRVVal", Value(48.0)}, {"rawWakingVal", Value(55.0)}},
                        "watchTrackDict");
    return store;
}

// Store files in a fresh folder, and platforms on them as the program would make.
class SnippetFiles {
public:
    // Writes every key through a file-backed store, as another process would.
    void write(const Dictionary& shared) {
        auto writer = platform("en_US");
        for (const auto& [key, value] : shared) writer->suiteNamed(platform::kAppGroupSuite)->setObject(value, key);
        writer->standardUserDefaults()->setObject(Value(21), "nightHour11");
    }

    // A platform on the files at `now`, in New York.
    std::unique_ptr<platform::Platform> platform(const char* localeId, Date now = kMorning) const {
        return std::make_unique<platform::Platform>(platform::PlatformOptions{
            .now = now, .timeZoneId = "America/New_York", .localeId = localeId, .preferencesDir = dir_.path(),
            .resourceDir = VELMORANT_TEST_RESOURCE_DIR,
            .diagnostics = [](std::string_view message) { ADD_FAILURE() << message; }});
    }

    std::filesystem::path sharedFile() const { return dir_.path() / "group.brumelkai.Velmorant.plist"; }

private:
    TempDir dir_;
};

// Shows `intent` on `controller`; the height reported.
inline double show(intents::IntentViewController& controller, std::string_view intent) {
    double height = 0;
    controller.configureViewForParameters({}, intents::Interaction{intents::makeIntent(intent)}, intents::InteractiveBehavior::None,
                                          &controller.extensionContext(),
                                          [&](bool, const intents::ParameterSet&, platform::Size size) { height = size.height; });
    return height;
}

// The store files a case starts from.
enum class Store {
    Tonight,    // every figure filed for tonight, with the watch's
    LastNight,  // every figure filed for the night before, with tonight's watch figures
    NoWatch,    // tonight's figures without the watch's
    Stages,     // tonight's, the watch reporting sleep stages
    Switched,   // tonight's, lights switched off at 22:45
    Bare,       // only the product settings
};

inline Dictionary storeFor(Store store) {
    if (store == Store::Bare) return Dictionary{{"velmorantConfig", Dictionary{{"requiredHours", Value(8.0)}}}};
    Dictionary shared = sharedStore(store == Store::LastNight ? "20240304" : kTonight, store != Store::NoWatch);
    if (store == Store::Switched) shared.setObject(kNightStart.dateByAddingTimeInterval(6300), "activeLightSwitch");
    if (store == Store::Stages) {
        Dictionary watch = *shared.objectForKey("watchTrackDict")->dictionary();
        watch.setObject(Value(true), "showStages");
        shared.setObject(watch, "watchTrackDict");
    }
    return shared;
}

inline std::string textOf(const intents::IntentViewController& controller, std::string_view view) {
    const auto& text = controller.views().view(view)->text();
    return text ? *text : "<none>";
}

}  // namespace velmorant::testing
