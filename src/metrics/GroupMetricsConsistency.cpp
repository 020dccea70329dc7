// Bedtime consistency: the average bedtime and how far it has moved.
#include "metrics/GroupMetrics.h"
#include "metrics/RecordKeys.h"

namespace velmorant::metrics {
using format::FormatTools;

using platform::Dictionary;
using platform::stringWithFormat;
using platform::Value;

GroupMetrics::Record GroupMetrics::requestConsistencyDict() {
    prepare();
    auto bank = storeDictionary(keys::kBankDict);
    if (!bank) return std::nullopt;
    const bool lastConsistency = groupPrefs_->boolForKey(keys::kLastConsistency);
    const Value* startValue = bank->objectForKey(keys::kStartDate);
    const auto start = startValue ? startValue->date() : std::nullopt;
    if (!start) return std::nullopt;
    const double average = floatFor(*bank, keys::kAverageBedtime);
    const double previous = floatFor(*bank, keys::kPrevAverageBedtime);

    FormatTools& ft = formatTools();
    Dictionary record;
    // With the flag set the previous average is the headline and the current one goes to the stars label.
    record.setObject(Value(stringWithFormat(
                         "%@", {ft.dayTime(start->dateByAddingTimeInterval(lastConsistency ? previous : average))})),
                     keys::kAvgBedtimeDateString);
    const double delta = average - previous;
    record.setObject(Value(static_cast<float>(delta)), keys::kBedTrend);

    std::string minutes;
    if (delta > 60.0) {
        minutes = ft.formattedMinInterval(delta);
        record.setObject(Value(stringWithFormat("%@ %@", {minutes, localized("later")})), keys::kTrendString);
    } else if (delta < -60.0) {
        minutes = ft.formattedMinInterval(-delta);
        record.setObject(Value(stringWithFormat("%@ %@", {minutes, localized("earlier")})), keys::kTrendString);
    } else {
        record.setObject(Value(localized("Consistent")), keys::kTrendString);
    }
    record.setObject(
        Value(lastConsistency ? stringWithFormat("%@", {ft.dayTime(start->dateByAddingTimeInterval(average))})
                              : minutes),
        keys::kStarsLabel);
    return record;
}

}  // namespace velmorant::metrics
