#include "SnippetChecks.h"

#include "platform/text/Text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

using namespace velmorant;
using intents::IntentViewController;
using intents::kIntentTypeNames;
using namespace velmorant::testing;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

// Sets `key` inside the store's dictionary `outer` (and one level deeper when `inner` is given).
void put(Dictionary& store, const char* outer, const char* inner, const char* key, Value value) {
    Dictionary dict = *store.objectForKey(outer)->dictionary();
    if (inner) {
        Dictionary nested = *dict.objectForKey(inner)->dictionary();
        nested.setObject(value, key);
        dict.setObject(nested, inner);
    } else {
        dict.setObject(value, key);
    }
    store.setObject(dict, outer);
}

struct Damage {
    const char* name;
    std::function<void(Dictionary&)> apply;
};

// No snippet may show what a broken figure turns into when formatted blindly.
TEST(SnippetTexts, NeverShowNotANumberInfinityOrAMissingObject) {
    const Damage damages[] = {
        {"a goal of no hours",
         [](Dictionary& s) {
             put(s, "velmorantConfig", nullptr, "requiredHours", 0.0);
             put(s, "bankDict", nullptr, "requiredHours", 0.0);
         }},
        {"figures that are not numbers",
         [](Dictionary& s) {
             put(s, "watchTrackDict", nullptr, "rawSleepTime", kNaN);
             put(s, "watchTrackDict", nullptr, "rawSleepBankTime", kNaN);
             put(s, "bankDict", "spO2Dict", "averageSpO2", kNaN);
             put(s, "bankDict", "readyDict", "hrvTodayVal", kNaN);
             put(s, "bankDict", nullptr, "wristTempTodayValue", kNaN);
         }},
        {"infinite figures",
         [](Dictionary& s) {
             put(s, "watchTrackDict", nullptr, "rawSleepBankTime", kInf);
             put(s, "watchTrackDict", nullptr, "rawRingValues", "inf|inf|inf");
             put(s, "bankDict", "respRateDict", "maxRespRate", kInf);
             put(s, "bankDict", "octaneDict", "bpmTodayVal", -kInf);
             put(s, "bankDict", nullptr, "wristTempAverage28", 1e300);
         }},
        {"texts in place of figures",
         [](Dictionary& s) {
             put(s, "watchTrackDict", nullptr, "rawSleepTime", "lots");
             put(s, "bankDict", "spO2Dict", "minSpO2", "");
             put(s, "velmorantConfig", nullptr, "requiredHours", "eight");
         }},
    };
    for (const auto& damage : damages) {
        for (const char* locale : {"en_US", "de_DE"}) {
            SCOPED_TRACE(::testing::Message() << damage.name << " " << locale);
            SnippetFiles files;
            Dictionary store = storeFor(Store::Switched);
            damage.apply(store);
            files.write(store);
            auto platform = files.platform(locale);
            IntentViewController controller(*platform, {});
            for (std::string_view intent : kIntentTypeNames) {
                show(controller, intent);
                for (const auto& view : controller.views().views()) {
                    if (!view->text()) continue;
                    const std::string text = platform::lowercaseString(*view->text());
                    for (const char* garbage : {"nan", "inf", "(null)", "\u221E"})
                        EXPECT_EQ(text.find(garbage), std::string::npos) << intent << " " << view->name() << ": " << text;
                }
            }
        }
    }
}

}  // namespace
