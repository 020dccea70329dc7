// Pictures are drawn when their pixels are first read, from what they were
// made with: a record, store or clock changed in between leaves them as they were.
#include "SnippetUiTestSupport.h"

#include "metrics/RecordKeys.h"
#include "platform/graphics/PngWriter.h"

#include <functional>
#include <string>

namespace velmorant::testing {
namespace keys = metrics::keys;

namespace {

using DrawnOnDemandTest = SnippetUiTest;

std::string png(const platform::ImagePtr& image) { return platform::encodePng(*image); }
// New York wall-clock time on the evening of kMorning's day; 24 and more is the next day.
platform::Date evening(double hour) { return kMorning.dateByAddingTimeInterval((hour - 7.5) * 3600); }

}  // namespace

TEST_F(DrawnOnDemandTest, APictureShowsWhatItWasMadeFromNotWhatChangedSince) {
    Dictionary record{{keys::kAverageSpO2, 96.5}, {keys::kMinSpO2, 91.0}, {keys::kMaxSpO2, 99.0}};
    const std::optional<platform::Date> bedtime = evening(22.5), waketime = evening(30.5);
    struct Row {
        const char* name;
        std::function<void()> before;
        std::function<platform::ImagePtr()> make;
        std::function<void()> change;
    };
    const Row rows[] = {
        {"gauge, its record changed", [] {}, [&] { return ui->drawSpO2GaugeWithSize(280, record); },
         [&] { record.setObject(Value(82.0), keys::kAverageSpO2); }},
        {"recharge rings, the goal in the store changed",
         [&] {
             put(keys::kVelmorantConfig, Dictionary{{keys::kRequiredHours, 8.0}});
             ui->requestSleepBankRings();
         },
         [&] { return ui->drawTheRechargeWithSize(280, 0.5f, 0.3f); },
         [&] { put(keys::kVelmorantConfig, Dictionary{{keys::kRequiredHours, 11.0}}); }},
        {"bed clock, the clock moved on", [] {}, [&] { return ui->drawTheBedClockWithSize(280, bedtime, waketime); },
         [&] { platform_->setNow(evening(19)); }},
    };
    for (const Row& row : rows) {
        start();
        row.before();
        const std::string expected = png(row.make());
        start();
        row.before();
        const platform::ImagePtr picture = row.make();
        row.change();
        EXPECT_FALSE(picture->isDrawn()) << row.name;
        EXPECT_TRUE(png(picture) == expected) << row.name;
        // The change does show in a picture made after it.
        EXPECT_TRUE(png(row.make()) != expected) << row.name;
    }
}

}  // namespace velmorant::testing
