// Sleep requests: sleep rings, recharge (sleep bank), tonight's bedtime and
// bedtime consistency, with their pictures.
#include "snippet_ui/SleepMetricsUI.h"

#include "platform/text/StringFormat.h"
#include "platform/text/Text.h"

#include <cmath>
#include <limits>

namespace velmorant::snippet_ui {
using format::FormatTools;
using metrics::GroupMetrics;
using palette::Pallet;

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
    if (!source || !source->contains("ringSleepPercent")) return std::nullopt;
    auto figure = [&](std::string_view key) { return recordFloat(*source, key); };
    const bool showStages = source->contains("showStages");
    const float sleep = figure("ringSleepPercent"), quality = figure("ringQualityPercent"),
                deep = figure("ringDeepPercent"), bpm = figure("ringBPMPercent");

    // The accessory widget's rings are smaller; the home-screen widget keeps the snippet's size.
    const float side = widgetAccessoryMode ? 260.0f : 280.0f;
    Dictionary record;
    record.setObject(
        Value(drawSleepRingsWithSize(side, sleep, quality, deep, bpm, figure("sleepRating"), showStages)),
        "ringsImage");
    copyKeys(*source, record, {"ringSleepLabel", "ringQualityLabel", "ringDeepLabel", "ringBPMLabel"});
    record.setObject(Value(pallet().colourForBatteryChargePercent(sleep)), "ringSleepColour");
    record.setObject(Value(pallet().colourForBatteryChargePercent(quality)), "ringQualityColour");
    record.setObject(Value(pallet().colourForBatteryChargePercent(deep)), "ringDeepColour");
    record.setObject(Value(pallet().colourForBatteryChargePercent(bpm)), "ringBPMColour");
    if (showStages) record.setObject(Value("1"), "showStages");
    copyKeys(*source, record, {"pasteItem"});
    return record;
}

platform::Dictionary SleepMetricsUI::requestSleepBankRings() {
    Dictionary record;
    platform::PreferencesStore& store = groupPrefs();
    FormatTools& ft = formatTools();
    const Value trackValue = store.objectForKey("watchTrackDict");
    const Dictionary* track = trackValue.dictionary();
    if (!track) return record;

    const float goalHours = getVelmorantConfigValueForKey("requiredHours");
    const float goal = held(static_cast<double>(goalHours) * 3600.0);
    const float asleep = held(storeNumber(*track, "rawSleepTime"));
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
    record.setObject(Value(drawRechargeRings(darkPalette, side, sleepFraction, bankFraction, goalHours)), "ringsImage");

    const std::string& locale = platform_.localeId();
    auto localized = [&](std::string_view key) { return platform_.localizedString(key, "", ""); };
    record.setObject(Value(ft.formattedTimeInterval(asleep)), "sleepTimeLabel");
    record.setObject(Value(platform::stringWithFormat("%.0f%% %@", {held(sleepFraction * 100.0), localized("of goal")})),
                     "sleepGoalLabel");
    record.setObject(Value(ft.formattedTimeInterval(bank)), "bankTimeLabel");
    record.setObject(Value(pallet().lightRatingColour(held(sleepFraction * 100.0))), "sleepIndicatorColour");
    record.setObject(Value(pallet().lightRatingColour(held(bankFraction * 100.0))), "bankIndicatorColour");
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
        "bankBalanceLabel");

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
        "pasteItem");
    return record;
}

SleepMetricsUI::Record SleepMetricsUI::requestLatestBedtime() {
    FormatTools& ft = formatTools();
    GroupMetrics::Record source = groupMetrics().requestSleepBank();
    if (!source || !source->contains("latestBedLabel")) return std::nullopt;
    const std::optional<Date> bedTime = dateIn(*source, "bedTime");
    Dictionary record;
    record.setObject(Value(drawBedClock(wellnessImageSide(), bedTime, dateIn(*source, "wakeTime"), platform_.now())),
                     "ringsImage");
    copyKeys(*source, record, {"latestBedTime", "wakeTimeLabel", "timeUntilBedLabel", "timeUntilWakeLabel"});

    // A widget counts down to the next bedtime, so one already past moves to tomorrow.
    if (widgetMode) {
        const Date now = platform_.now();
        Date widgetBedTime = now;
        if (bedTime) {
            const std::string line = "widget bedtime " + ft.hourMin(*bedTime);
            platform_.diagnostics().report(line);
            // Logged on every request, not once per process.
            platform_.diagnostics().forget(line);
            widgetBedTime = bedTime->timeIntervalSinceDate(now) < 0 ? bedTime->dateByAddingTimeInterval(kDay) : *bedTime;
        }
        record.setObject(Value(widgetBedTime), "bedTime");
    }
    copyKeys(*source, record, {"pasteItem"});
    return record;
}

SleepMetricsUI::Record SleepMetricsUI::requestConsistency() {
    GroupMetrics::Record source = groupMetrics().requestConsistencyDict();
    if (!source) return std::nullopt;
    Dictionary record;
    record.setObject(Value(drawConsistencyGaugeWithSize(wellnessImageSide(), *source)), "ringsImage");
    copyKeys(*source, record, {"avgBedtimeDateString", "trendString", "starsLabel"});
    return record;
}

}  // namespace velmorant::snippet_ui
