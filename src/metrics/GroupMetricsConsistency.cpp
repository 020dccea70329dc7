// Bedtime consistency: the average bedtime and how far it has moved.
#include "metrics/GroupMetrics.h"

namespace velmorant::metrics {
using format::FormatTools;

using platform::Dictionary;
using platform::stringWithFormat;
using platform::Value;

GroupMetrics::Record GroupMetrics::requestConsistencyDict() {
    prepare();
    auto bank = storeDictionary("bankDict");
    if (!bank) return std::nullopt;
    const bool lastConsistency = groupPrefs_->boolForKey("lastConsistency");
    const Value* startValue = bank->objectForKey("startDate");
    const auto start = startValue ? startValue->date() : std::nullopt;
    if (!start) return std::nullopt;
    const double average = floatFor(*bank, "averageBedtime");
    const double previous = floatFor(*bank, "prevAverageBedtime");

    FormatTools& ft = formatTools();
    Dictionary record;
    // With the flag set the previous average is the headline and the current one goes to the stars label.
    record.setObject(
        Value(stringWithFormat("%@", {ft.dayTime(start->dateByAddingTimeInterval(lastConsistency ? previous : average))})),
        "avgBedtimeDateString");
    const double delta = average - previous;
    record.setObject(Value(static_cast<float>(delta)), "bedTrend");

    std::string minutes;
    if (delta > 60.0) {
        minutes = ft.formattedMinInterval(delta);
        record.setObject(Value(stringWithFormat("%@ %@", {minutes, localized("later")})), "trendString");
    } else if (delta < -60.0) {
        minutes = ft.formattedMinInterval(-delta);
        record.setObject(Value(stringWithFormat("%@ %@", {minutes, localized("earlier")})), "trendString");
    } else {
        record.setObject(Value(localized("Consistent")), "trendString");
    }
    record.setObject(Value(lastConsistency ? stringWithFormat("%@", {ft.dayTime(start->dateByAddingTimeInterval(average))})
                                           : minutes),
                     "starsLabel");
    return record;
}

}  // namespace velmorant::metrics
