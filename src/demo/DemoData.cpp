#include "DemoData.h"

#include "metrics/RecordKeys.h"
#include "platform/text/Calendar.h"
#include "platform/text/DateFormatter.h"

#include <algorithm>
#include <memory>

namespace velmorant::demo {
namespace {

namespace keys = metrics::keys;

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
        {keys::kNightHour, Value(kNightHour)},
        {keys::kRequiredHours, Value(8.0)},
        {keys::kMedianWake, Value(36000.0)},
        {keys::kAverageWake, Value(35400.0)},
        {keys::kAverageEfficiency, Value(91.0)},
        {keys::kSpO2Dict, Dictionary{{keys::kKey, today},
                                {keys::kAverageSpO2, 95.4},
                                {keys::kMinSpO2, 90.0},
                                {keys::kMaxSpO2, 99.0},
                                {keys::kAverageSpO27, 95.1},
                                {keys::kMinSpO27, 89.0},
                                {keys::kMaxSpO27, 99.0}}},
        {keys::kRespRateDict, Dictionary{{keys::kKey, today},
                                    {keys::kAverageRespRate, 14.26},
                                    {keys::kMinRespRate, 12.1},
                                    {keys::kMaxRespRate, 17.8},
                                    {keys::kAverageRespRate7, 14.0},
                                    {keys::kMinRespRate7, 11.8},
                                    {keys::kMaxRespRate7, 18.2}}},
        {keys::kWristTempKey, today},
        {keys::kWristTempScore, 4.4},
        {keys::kWristTempTodayValue, 35.92},
        {keys::kWristTempAverage28, 35.61},
        {keys::kReadyDict, Dictionary{{keys::kKey, today},
                                 {keys::kHrvAverage, 45.0},
                                 {keys::kHrvTodayVal, 48.0},
                                 {keys::kBpmAverage, 57.0},
                                 {keys::kBpmTodayVal, 55.0}}},
        {keys::kOctaneDict, Dictionary{{keys::kKey, today},
                                  {keys::kHrvAverage, 41.0},
                                  {keys::kHrvTodayVal, 44.0},
                                  {keys::kBpmAverage, 52.0},
                                  {keys::kBpmTodayVal, 51.0}}},
        // Bedtime averages are kept as seconds after a reference instant.
        {keys::kStartDate, calendar.plusDays(start, -28)},
        {keys::kAverageBedtime, Value(1800.0 + 420)},
        {keys::kPrevAverageBedtime, Value(1800.0)},
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
        {keys::kRawSynchTime, synch},
        {keys::kRawRingRating, "0.82|1.05|0.96"},
        {keys::kRawRingValues, "5400|6300|52"},
        {keys::kRawSleepTime, Value(27360.0)},
        {"rawSleepBankTime", Value(27360.0)},
        {keys::kRawHRVVal, Value(48.0)},
        {keys::kRawWakingVal, Value(55.0)},
    };
    Dictionary config{
        {keys::kNightHour, Value(kNightHour)},
        {keys::kRequiredHours, Value(8.0)},
        {keys::kMinimumHours, Value(7.0)},
        {keys::kMaximumHours, Value(9.5)},
    };

    DemoStores stores;
    stores.shared = Dictionary{
        {keys::kBankDict, bank},
        {keys::kWatchTrackDict, watch},
        {keys::kVelmorantConfig, config},
        {keys::kLastConsistency, false},
        {keys::kReadyStars, false},
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
