// The sleep bank: a weighted seven-night average, tonight's forecast and the
// bedtime that follows from it, cached for the hours after the night hour.
#include "metrics/GroupMetrics.h"

#include "metrics/RecordKeys.h"
#include "platform/text/Text.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace velmorant::metrics {
using format::FormatTools;

using platform::Date;
using platform::Dictionary;
using platform::stringWithFormat;
using platform::Value;

namespace {

std::string withoutBlanks(const std::string& text) { return platform::stringByReplacing(text, " ", ""); }

// Figures near the float limit (only a damaged store holds nights or goals of
// 1e38 seconds) would overflow the single-precision arithmetic to infinity;
// they are held at the largest float instead, so the bank still reads as a
// number. Below the limit these are the float operations themselves.
constexpr float kLargest = std::numeric_limits<float>::max();
float held(float v) { return std::isinf(v) ? std::copysign(kLargest, v) : v; }
float narrowed(double v) { return static_cast<float>(std::clamp<double>(v, -kLargest, kLargest)); }

std::optional<Date> dateFor(const Dictionary& dict, std::string_view key) {
    const Value* value = dict.objectForKey(key);
    return value ? value->date() : std::nullopt;
}

}  // namespace

std::string GroupMetrics::sleepBankPasteItem(const std::string& latestBedTime, const std::string& wakeTime,
                                             float untilBed, float forecast) {
    return localeFormat("{\"%@\":\"%@\", \"%@\":\"%@\", \"%@\": \"%.2f\", \"%@\":\"%.2f\"}",
                        {withoutBlanks(localized("Tonight's Bedtime")), latestBedTime,
                         withoutBlanks(localized("Wake time")), wakeTime,
                         withoutBlanks(platform::capitalizedString(localized("Time until bed"))), untilBed / 3600.0f,
                         withoutBlanks(localized("Required Hours")), forecast / 3600.0f});
}

void GroupMetrics::cacheSleepBank(const Dictionary& record) {
    groupPrefs_->setObject(Value(record), keys::kCachedSleepBank);
    groupPrefs_->setObject(Value(platform_.now()), keys::kCachedSleepBankUpdate);
}

std::optional<Date> GroupMetrics::fixedWakeTime(long nightHour, Date base, long hour) {
    // Set per weekday of the morning that ends the coming night (Monday 0 ... Sunday 6).
    FormatTools& ft = formatTools();
    long weekday = 0;
    if (nightHour >= 1)
        weekday = ft.getWeekdayNoForDate(hour < nightHour ? base.dateByAddingTimeInterval(86400) : base);
    const long n = weekday < 2 ? 6 : weekday - 2;
    const float wakeTime = getVelmorantConfigValueForKey(stringWithFormat("WakeTime%d", {n}));
    if (getVelmorantSwitchValueForKey(stringWithFormat("WakeFixed%d", {n})) && wakeTime >= 0.0f) {
        return ft.dateForDate(base, 0, 0).dateByAddingTimeInterval(wakeTime);
    }
    return std::nullopt;
}

std::optional<GroupMetrics::BankBalance> GroupMetrics::weighNights(const Dictionary& bank, Date base, float required,
                                                                   float watchSleep) {
    // Weights 1 (six nights ago) to 7 (the current night). A missing night
    // counts as the required amount towards the earlier nights' sum.
    FormatTools& ft = formatTools();
    const float R = required;
    double weightedSum = 0, weightSum = 0, earlierSum = 0, targetSum = 0;
    long earlierNights = 0, count = 0;
    float w = 1.0f;
    for (int i = 0; i < 7; ++i, w += 1.0f) {
        const Date night = base.dateByAddingTimeInterval(-518400.0 + 86400.0 * i);
        const Value* stored = bank.objectForKey(ft.YYMMDD(night));
        auto storedValue = numberFor(stored);
        bool present = storedValue.has_value();
        float x = present ? static_cast<float>(*storedValue) : 0.0f;
        // Tonight, before the main app has filed it, the watch's own figure stands in.
        if (!stored && i == 6 && watchSleep > 0.0f) {
            x = watchSleep;
            present = true;
        }
        if (!present || x < 0.0f) {
            if (i != 0) {
                earlierNights += 1;
                earlierSum += held((w - 1.0f) * R);
            }
        } else {
            weightedSum += held(w * x);
            weightSum += w;
            count += 1;
            if (i != 0) {
                earlierNights += 1;
                earlierSum += held((w - 1.0f) * x);
            }
        }
        targetSum += held(w * R);
    }
    if (weightSum <= 0) return std::nullopt;
    const float balance = narrowed(weightedSum / weightSum);
    float forecast;
    if (earlierSum > 0 && count > 1) forecast = narrowed((targetSum - earlierSum) / (earlierNights + 1));
    else forecast = R >= balance ? held((R - balance) + R) : R - (balance - R);
    if (balance <= 0.0f) return std::nullopt;
    return BankBalance{balance, forecast};
}

Date GroupMetrics::latestBedtime(Date wake, Date nightStart, float requiredHours, float efficiency, float forecast) {
    float minimum = getVelmorantConfigValueForKey(keys::kMinimumHours);
    if (minimum < 1.0f) minimum = requiredHours - 1.0f;
    float maximum = getVelmorantConfigValueForKey(keys::kMaximumHours);
    if (maximum < minimum) maximum = requiredHours + 2.0f;
    // Sleep turned into time in bed by the efficiency.
    const float toBed = 100.0f / efficiency;
    float need;
    if (minimum * 3600.0f > forecast) need = toBed * minimum * 3600.0f;
    else if (maximum * 3600.0f < forecast) need = toBed * maximum * 3600.0f;
    else need = toBed * forecast;

    const Date candidate = wake.dateByAddingTimeInterval(-static_cast<double>(need));
    // A need that is no finite time (a damaged efficiency or clamp) gives the night start, as one too long does.
    const bool usable =
        std::isfinite(candidate.timeIntervalSince1970()) && candidate.timeIntervalSinceDate(nightStart) >= 0;
    return usable ? candidate : nightStart;
}

GroupMetrics::Record GroupMetrics::requestSleepBank() {
    prepare();
    if (shouldReportPreviousDay()) {
        if (Record previous = returnPreviousSleepBank()) return previous;
    }
    auto bank = storeDictionary(keys::kBankDict);
    if (!bank) return std::nullopt;

    float watchSleep = 0.0f;
    if (auto track = storeDictionary(keys::kWatchTrackDict); track && watchDictIsValid()) {
        watchSleep = floatFor(*track, keys::kRawSleepTime);
    }

    // Unusable goals and efficiencies read as missing: they are divisors below.
    float requiredHours = floatFor(*bank, keys::kRequiredHours, 8.0f);
    if (!(requiredHours > 0.0f)) requiredHours = 8.0f;
    const long nightHour = bankNightHour(*bank);
    float wakeOffset = 0.0f;
    if (auto median = numberFor(*bank, keys::kMedianWake); median && *median > 0.0)
        wakeOffset = static_cast<float>(*median);
    else if (auto average = numberFor(*bank, keys::kAverageWake)) wakeOffset = static_cast<float>(*average);
    float efficiency = floatFor(*bank, keys::kAverageEfficiency, 90.0f);
    if (!(efficiency > 0.0f)) efficiency = 90.0f;

    FormatTools& ft = formatTools();
    const Date now = platform_.now();
    const Date base = getFromDateForNightHour(nightHour).dateByAddingTimeInterval(43200);
    const float R = held(requiredHours * 3600.0f);
    const long hour = ft.currentHour(now);
    const std::optional<Date> fixedWake = fixedWakeTime(nightHour, base, hour);

    const std::optional<BankBalance> weighed = weighNights(*bank, base, R, watchSleep);
    if (!weighed) return std::nullopt;
    const auto [balance, forecast] = *weighed;

    Dictionary record;
    record.setObject(Value(balance), keys::kBankBalance);
    record.setObject(Value(forecast), keys::kBankForecast);
    record.setObject(Value(held(balance / R)), keys::kBankPercent);
    if (!(wakeOffset > 0.0f)) return record;

    const Date nightStart = getFromDateForNightHour(nightHour);
    const Date wake = fixedWake ? *fixedWake : nightStart.dateByAddingTimeInterval(wakeOffset);
    const Date bedTime = latestBedtime(wake, nightStart, requiredHours, efficiency, forecast);
    const double shift = hour < nightHour || nightHour < 1 ? 86400.0 : 0.0;

    const std::string latestBedTime = ft.dayTime(bedTime);
    const Date adjusted = bedTime.dateByAddingTimeInterval(shift);
    const float untilBed = static_cast<float>(adjusted.timeIntervalSinceDate(now));
    record.setObject(Value(latestBedTime), keys::kLatestBedTime);
    record.setObject(Value(stringWithFormat(localized("Try to be in bed by %@"), {latestBedTime})),
                     keys::kLatestBedLabel);
    record.setObject(Value(bedTime), keys::kBedTime);
    record.setObject(Value(adjusted), keys::kAdjustedBedTime);
    record.setObject(Value(untilBed), keys::kTimeUntilBed);
    record.setObject(Value(ft.formattedTimeInterval(untilBed)), keys::kTimeUntilBedLabel);
    record.setObject(Value(wake), keys::kWakeTime);
    const std::string wakeLabel = ft.dayTime(wake);
    record.setObject(Value(wakeLabel), keys::kWakeTimeLabel);
    record.setObject(Value(ft.formattedTimeInterval(wake.dateByAddingTimeInterval(shift).timeIntervalSinceDate(now))),
                     keys::kTimeUntilWakeLabel);
    record.setObject(Value(sleepBankPasteItem(latestBedTime, wakeLabel, untilBed, forecast)), keys::kPasteItem);
    cacheSleepBank(record);
    return record;
}

GroupMetrics::Record GroupMetrics::returnPreviousSleepBank() {
    prepare();
    const Date previousNight = getFromDateForNightHour(configNightHour()).dateByAddingTimeInterval(-86400);
    const Value updateValue = groupPrefs_->objectForKey(keys::kCachedSleepBankUpdate);
    const auto updated = updateValue.date();
    if (!updated || !(updated->timeIntervalSinceDate(previousNight) > 60.0)) return std::nullopt;
    auto cached = storeDictionary(keys::kCachedSleepBank);
    if (!cached) return std::nullopt;
    // Without its bedtime and wake time a cached record cannot be brought up to date.
    const auto bedTime = dateFor(*cached, keys::kBedTime);
    const auto wakeTime = dateFor(*cached, keys::kWakeTime);
    if (!bedTime || !wakeTime) return std::nullopt;

    // Only values of the record's own kinds are brought over: a damaged cache
    // must not put text where a number belongs, nor NaN anywhere.
    Dictionary record;
    for (const char* key : {keys::kBankBalance, keys::kBankForecast, keys::kBankPercent}) {
        const Value* value = cached->objectForKey(key);
        const bool number = value && (value->kind() == Value::Kind::Real || value->kind() == Value::Kind::Integer);
        if (number && numberFor(value)) record.setObject(*value, key);
    }
    record.setObject(Value(*bedTime), keys::kBedTime);
    record.setObject(Value(*wakeTime), keys::kWakeTime);
    for (const char* key : {keys::kLatestBedTime, keys::kLatestBedLabel, keys::kWakeTimeLabel}) {
        const Value* value = cached->objectForKey(key);
        if (value && value->string()) record.setObject(*value, key);
    }
    FormatTools& ft = formatTools();
    const Date now = platform_.now();
    const Date adjusted = bedTime->dateByAddingTimeInterval(86400);
    const float untilBed = static_cast<float>(adjusted.timeIntervalSinceDate(now));
    record.setObject(Value(ft.formattedTimeInterval(untilBed)), keys::kTimeUntilBedLabel);
    record.setObject(Value(untilBed), keys::kTimeUntilBed);
    record.setObject(Value(adjusted), keys::kAdjustedBedTime);
    record.setObject(
        Value(ft.formattedTimeInterval(wakeTime->dateByAddingTimeInterval(86400).timeIntervalSinceDate(now))),
        keys::kTimeUntilWakeLabel);

    const Value* latest = cached->objectForKey(keys::kLatestBedTime);
    const std::string latestText = latest && latest->string() ? *latest->string() : std::string();
    record.setObject(Value(sleepBankPasteItem(latestText, ft.dayTime(*wakeTime), untilBed,
                                              floatFor(*cached, keys::kBankForecast))),
                     keys::kPasteItem);
    return record;
}

}  // namespace velmorant::metrics
