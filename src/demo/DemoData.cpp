#include "DemoData.h"

#include "platform/text/Calendar.h"
#include "platform/text/DateFormatter.h"

#include <algorithm>
#include <memory>

namespace velmorant::demo {
namespace {

using platform::Date;
using platform::Dictionary;
using platform::Value;

constexpr int kNightHour = 21;

// Local calendar arithmetic for dating the demo night.
class LocalCalendar {
public:
    explicit LocalCalendar(const platform::Platform& platform)
        : calendar_(platform.timeZone()), keyFormat_(platform::Locale::posix(), platform.timeZone()) {
        keyFormat_.setDateFormat("yyyyMMdd");
    }

    // The start of the night that `now` belongs to.
    Date nightStart(Date now) {
        auto today = calendar_.components(now);
        if (!today) return now;
        auto day = today->hour < kNightHour ? calendar_.components(plusDays(now, -1)) : today;
        if (!day) return now;
        day->hour = kNightHour;
        day->minute = 0;
        day->second = 0;
        return calendar_.dateFromComponents(*day).value_or(now);
    }

    Date plusDays(Date date, int days) { return calendar_.dateByAddingDays(date, days).value_or(date); }

    std::string dayKey(Date date) { return keyFormat_.stringFromDate(date); }

private:
    platform::Calendar calendar_;
    platform::DateFormatter keyFormat_;
};

}  // namespace

DemoStores makeDemoStores(const platform::Platform& platform) {
    LocalCalendar calendar(platform);
    Date now = platform.now();
    Date start = calendar.nightStart(now);
    std::string today = calendar.dayKey(start.dateByAddingTimeInterval(43200));

    Dictionary bank{
        {"nightHour", Value(kNightHour)},
        {"requiredHours", Value(8.0)},
        {"medianWake", Value(36000.0)},
        {"averageWake", Value(35400.0)},
        {"averageEfficiency", Value(91.0)},
        {"spO2Dict", Dictionary{{"key", today},
                                {"averageSpO2", 95.4},
                                {"minSpO2", 90.0},
                                {"maxSpO2", 99.0},
                                {"averageSpO27", 95.1},
                                {"minSpO27", 89.0},
                                {"maxSpO27", 99.0}}},
        {"respRateDict", Dictionary{{"key", today},
                                    {"averageRespRate", 14.26},
                                    {"minRespRate", 12.1},
                                    {"maxRespRate", 17.8},
                                    {"averageRespRate7", 14.0},
                                    {"minRespRate7", 11.8},
                                    {"maxRespRate7", 18.2}}},
        {"wristTempKey", today},
        {"wristTempScore", 4.4},
        {"wristTempTodayValue", 35.92},
        {"wristTempAverage28", 35.61},
        {"readyDict", Dictionary{{"key", today},
                                 {"hrvAverage", 45.0},
                                 {"hrvTodayVal", 48.0},
                                 {"bpmAverage", 57.0},
                                 {"bpmTodayVal", 55.0}}},
        {"octaneDict", Dictionary{{"key", today},
                                  {"hrvAverage", 41.0},
                                  {"hrvTodayVal", 44.0},
                                  {"bpmAverage", 52.0},
                                  {"bpmTodayVal", 51.0}}},
        // Bedtime averages are kept as seconds after a reference instant.
        {"startDate", calendar.plusDays(start, -28)},
        {"averageBedtime", Value(1800.0 + 420)},
        {"prevAverageBedtime", Value(1800.0)},
    };
    // The last six nights of sleep (seconds), oldest first; tonight comes from the watch.
    const double nights[] = {26100, 27900, 25200, 29100, 27000, 28200};
    for (int i = 0; i < 6; ++i) {
        Date night = calendar.plusDays(start, i - 6).dateByAddingTimeInterval(43200);
        bank.setObject(Value(nights[i]), calendar.dayKey(night));
    }

    Date synch = std::min(now, start.dateByAddingTimeInterval(10.5 * 3600));
    if (synch.timeIntervalSinceDate(start) <= 60) synch = start.dateByAddingTimeInterval(61);
    Dictionary watch{
        {"rawSynchTime", synch},
        {"rawRingRating", "0.82|1.05|0.96"},
        {"rawRingValues", "5400|6300|52"},
        {"rawSleepTime", Value(27360.0)},
        {"rawSleepBankTime", Value(27360.0)},
        {"rawHRVVal", Value(48.0)},
        {"rawWakingVal", Value(55.0)},
    };
    Dictionary config{
        {"nightHour", Value(kNightHour)},
        {"requiredHours", Value(8.0)},
        {"minimumHours", Value(7.0)},
        {"maximumHours", Value(9.5)},
    };

    DemoStores stores;
    stores.shared = Dictionary{
        {"bankDict", bank},
        {"watchTrackDict", watch},
        {"velmorantConfig", config},
        {"lastConsistency", false},
        {"readyStars", false},
    };
    // Lights went off at 22:45, or just now early in the evening, so the
    // switch is set whenever the demo runs and never lies in the future.
    Date lightsOff = std::min(now, start.dateByAddingTimeInterval(1.75 * 3600));
    stores.shared.setObject(lightsOff, "activeLightSwitch");
    stores.standard = Dictionary{{"darkTheme6", true}, {"nightHour11", Value(kNightHour)}};
    return stores;
}

void installDemoStores(platform::Platform& platform) {
    DemoStores stores = makeDemoStores(platform);
    auto shared = platform.suiteNamed(platform::kAppGroupSuite);
    for (const auto& [key, value] : stores.shared) shared->setObject(value, key);
    auto standard = platform.standardUserDefaults();
    for (const auto& [key, value] : stores.standard) standard->setObject(value, key);
}

}  // namespace velmorant::demo
