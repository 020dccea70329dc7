// Sleep requests: sleep rings, recharge (sleep bank), tonight's bedtime and
// bedtime consistency, with their pictures.
#include "snippet_ui/SleepMetricsUI.h"

#include "metrics/RecordKeys.h"
#include "platform/text/StringFormat.h"
#include "platform/text/Text.h"

#include <cmath>
#include <limits>

namespace velmorant::snippet_ui {
using format::FormatTools;
using metrics::GroupMetrics;
using palette::Pallet;
namespace keys = metrics::keys;

using platform::Date;
using platform::Dictionary;
using platform::Value;

namespace {

constexpr double kDay = 86400;

// A store figure as a number; other kinds, NaN, infinities and figures beyond
// single precision are unreadable and read as missing, that is 0.
double storeNumber(const Dictionary& dict, std::string_view key) {
    const Value* value = dict.objectForKey(key);
    if (!value) return 0;
    switch (value->kind()) {
        case Value::Kind::Boolean:
        case Value::Kind::Integer:
        case Value::Kind::Real:
        case Value::Kind::String: break;
        default: return 0;
    }
    const double number = value->doubleValue();
    if (!std::isfinite(number) || std::fabs(number) > std::numeric_limits<float>::max()) return 0;
    return number;
}

float recordFloat(const Dictionary& record, std::string_view key) {
    const Value* value = record.objectForKey(key);
    return value ? value->floatValue() : 0.0f;
}

std::optional<Date> dateIn(const Dictionary& record, std::string_view key) {
    const Value* value = record.objectForKey(key);
    return value ? value->date() : std::nullopt;
}

}  // namespace

SleepMetricsUI::Record SleepMetricsUI::requestQuality() {
    formatTools();
    GroupMetrics::Record source = groupMetrics().requestQuality();
    if (!source || !source->contains(keys::kRingSleepPercent)) return std::nullopt;
    auto figure = [&](std::string_view key) { return recordFloat(*source, key); };
    const bool showStages = source->contains(keys::kShowStages);
    const float sleep = figure(keys::kRingSleepPercent), quality = figure(keys::kRingQualityPercent),
                deep = figure(keys::kRingDeepPercent), bpm = figure(keys::kRingBPMPercent);

    // The accessory widget's rings are smaller; the home-screen widget keeps the snippet's size.
    const float side = widgetAccessoryMode ? 260.0f : 280.0f;
    Dictionary record;
    record.setObject(
        Value(drawSleepRingsWithSize(side, sleep, quality, deep, bpm, figure(keys::kSleepRating), showStages)),
        keys::kRingsImage);
    copyKeys(*source, record,
             {keys::kRingSleepLabel, keys::kRingQualityLabel, keys::kRingDeepLabel, keys::kRingBPMLabel});
    record.setObject(Value(pallet().colourForBatteryChargePercent(sleep)), keys::kRingSleepColour);
    record.setObject(Value(pallet().colourForBatteryChargePercent(quality)), keys::kRingQualityColour);
    record.setObject(Value(pallet().colourForBatteryChargePercent(deep)), keys::kRingDeepColour);
    record.setObject(Value(pallet().colourForBatteryChargePercent(bpm)), keys::kRingBPMColour);
    if (showStages) record.setObject(Value("1"), keys::kShowStages);
    copyKeys(*source, record, {keys::kPasteItem});
    return record;
}

platform::Dictionary SleepMetricsUI::requestSleepBankRings() {
    Dictionary record;
    platform::PreferencesStore& store = groupPrefs();
    FormatTools& ft = formatTools();
    const Value trackValue = store.objectForKey(keys::kWatchTrackDict);
    const Dictionary* track = trackValue.dictionary();
    if (!track) return record;

    const float goalHours = getVelmorantConfigValueForKey(keys::kRequiredHours);
    const float goal = held(static_cast<double>(goalHours) * 3600.0);
    const float asleep = held(storeNumber(*track, keys::kRawSleepTime));
    const float bank = held(storeNumber(*track, "rawSleepBankTime"));
    // Without a goal there is nothing to measure against: the rings stay empty
    // and the balance is even, rather than showing an infinite ratio.
    const bool hasGoal = goal > 0.0f;
    auto ofGoal = [&](float seconds) { return hasGoal ? held(static_cast<double>(seconds) / goal) : 0.0f; };
    const float sleepFraction = ofGoal(asleep);
    const float bankFraction = ofGoal(bank);

    const float side = widgetAccessoryMode ? 200.0f : widgetMode ? 220.0f : 280.0f;
    // The rings are dark, and so is everything coloured after them.
    Pallet& darkPalette = pallet();
    darkPalette.setDarkTheme(true);
    record.setObject(Value(drawRechargeRings(darkPalette, side, sleepFraction, bankFraction, goalHours)),
                     keys::kRingsImage);

    const std::string& locale = platform_.localeId();
    auto localized = [&](std::string_view key) { return platform_.localizedString(key, "", ""); };
    record.setObject(Value(ft.formattedTimeInterval(asleep)), keys::kSleepTimeLabel);
    record.setObject(
        Value(platform::stringWithFormat("%.0f%% %@", {held(sleepFraction * 100.0), localized("of goal")})),
        keys::kSleepGoalLabel);
    record.setObject(Value(ft.formattedTimeInterval(bank)), keys::kBankTimeLabel);
    record.setObject(Value(pallet().lightRatingColour(held(sleepFraction * 100.0))), keys::kSleepIndicatorColour);
    record.setObject(Value(pallet().lightRatingColour(held(bankFraction * 100.0))), keys::kBankIndicatorColour);
    record.setObject(Value(bankFraction), "bankPercentage");
    record.setObject(Value(ft.formattedShortTimeInterval(bank)), "shortBankTimeLabel");

    // Below the goal the bank is in debt; an exact goal is a credit of 0.
    const bool inDebt = bank < goal;
    const float ratio = hasGoal ? (inDebt ? ofGoal(goal - bank) : ofGoal(bank - goal)) : 0.0f;
    const float percent = held(ratio * 100.0);
    const float credit = inDebt ? 0.0f : percent;
    const float debt = inDebt ? percent : 0.0f;
    const std::string word = inDebt ? platform::lowercaseString(localized("Debt")) : localized("Credit");
    // Small balances keep a decimal, so a near-even bank does not read as 0%.
    record.setObject(
        Value(platform::localizedStringWithFormat(locale, ratio < 1.0f ? "%.1f%% %@" : "%.0f%% %@", {percent, word})),
        keys::kBankBalanceLabel);

    std::optional<Date> start = store.objectForKey("sleepSessionStart").date();
    std::optional<Date> end = store.objectForKey("sleepSessionEnd").date();
    if (!start || !end) start = end = platform_.now();
    record.setObject(
        Value(platform::localizedStringWithFormat(
            locale,
            "{\"%@%%\":\"%.0f\", \"%@%%\":\"%.1f\", \"%@%%\": \"%.1f\", \"%@\":\"%.02f\", \"%@\":\"%.02f\", "
            "\"%@\":\"%@\", \"%@\":\"%@\"}",
            {localized("Recharge"), held(sleepFraction * 100.0), localized("Credit"), credit, localized("Debt"), debt,
             localized("Sleep"), asleep / 3600.0f, localized("Balance"), bank / 3600.0f, localized("Start"),
             ft.shorthhmmDDMMYY(*start), localized("Until"), ft.shorthhmmDDMMYY(*end)})),
        keys::kPasteItem);
    return record;
}

SleepMetricsUI::Record SleepMetricsUI::requestLatestBedtime() {
    FormatTools& ft = formatTools();
    GroupMetrics::Record source = groupMetrics().requestSleepBank();
    if (!source || !source->contains(keys::kLatestBedLabel)) return std::nullopt;
    const std::optional<Date> bedTime = dateIn(*source, keys::kBedTime);
    Dictionary record;
    record.setObject(
        Value(drawBedClock(wellnessImageSide(), bedTime, dateIn(*source, keys::kWakeTime), platform_.now())),
        keys::kRingsImage);
    copyKeys(*source, record,
             {keys::kLatestBedTime, keys::kWakeTimeLabel, keys::kTimeUntilBedLabel, keys::kTimeUntilWakeLabel});

    // A widget counts down to the next bedtime, so one already past moves to tomorrow.
    if (widgetMode) {
        const Date now = platform_.now();
        Date widgetBedTime = now;
        if (bedTime) {
            const std::string line = "widget bedtime " + ft.hourMin(*bedTime);
            platform_.diagnostics().report(line);
            // Logged on every request, not once per process.
            platform_.diagnostics().forget(line);
            widgetBedTime =
                bedTime->timeIntervalSinceDate(now) < 0 ? bedTime->dateByAddingTimeInterval(kDay) : *bedTime;
        }
        record.setObject(Value(widgetBedTime), keys::kBedTime);
    }
    copyKeys(*source, record, {keys::kPasteItem});
    return record;
}

SleepMetricsUI::Record SleepMetricsUI::requestConsistency() {
    GroupMetrics::Record source = groupMetrics().requestConsistencyDict();
    if (!source) return std::nullopt;
    Dictionary record;
    record.setObject(Value(drawConsistencyGaugeWithSize(wellnessImageSide(), *source)), keys::kRingsImage);
    copyKeys(*source, record, {keys::kAvgBedtimeDateString, keys::kTrendString, keys::kStarsLabel});
    return record;
}

}  // namespace velmorant::snippet_ui
