// Blood oxygen, respiration rate and wrist temperature records.
#include "metrics/GroupMetrics.h"
#include "metrics/RecordKeys.h"

namespace velmorant::metrics {

using platform::Dictionary;
using platform::stringWithFormat;
using platform::Value;

// What differs between the SpO2 and the respiration record; everything else is one design.
struct GroupMetrics::VitalTable {
    const char* nestedKey;
    const char* title;
    // Store and record names of the six values, in the order average, min, max and their 7-day forms.
    const char* valueKeys[6];
    const char* averageLabelKey;
    const char* widgetLabelKey;  // nullptr when the measure has no widget label
    const char* rangeLabelKey;
    const char* minLabelKey;
    const char* maxLabelKey;
    const char* average7LabelKey;
    const char* range7LabelKey;
    const char* sentenceKey;
    const char* unit;  // localised and passed after the average; nullptr for none
    const char* averageFormat;
    const char* widgetFormat;
    const char* rangeFormat;
    const char* minMaxFormat;
    const char* average7Format;
    const char* range7Format;
    const char* risingFormat;
    const char* fallingFormat;
    const char* averageOpening;
    const char* rangeOpening;
    const char* pasteNames[3];
};

namespace {

const GroupMetrics::Record kNone = std::nullopt;

}  // namespace

GroupMetrics::Record GroupMetrics::vitalRecord(const VitalTable& t) {
    prepare();
    auto bank = storeDictionary(keys::kBankDict);
    if (!bank) return kNone;
    const Value* nestedValue = bank->objectForKey(t.nestedKey);
    const Dictionary* nested = nestedValue ? nestedValue->dictionary() : nullptr;
    if (!nested) return kNone;
    if (!isCurrentDay(nested->objectForKey(keys::kKey), *bank)) return kNone;

    float v[6];
    for (int i = 0; i < 6; ++i) v[i] = floatFor(*nested, t.valueKeys[i]);
    const float average = v[0], minimum = v[1], maximum = v[2];
    const float average7 = v[3], minimum7 = v[4], maximum7 = v[5];

    Dictionary record;
    record.setObject(Value(localized(t.title)), keys::kTitle);

    std::string averageLabel = "--", minLabel = "--", maxLabel = "--";
    std::string average7Label = "--", range7Label = "--", widgetLabel = "--";
    std::string difLabel;
    int difColour = 0;
    if (average > 0.0f) {
        if (t.unit) averageLabel = localeFormat(t.averageFormat, {average, localized(t.unit)});
        else averageLabel = localeFormat(t.averageFormat, {average});
        if (t.widgetFormat) widgetLabel = localeFormat(t.widgetFormat, {average});
        record.setObject(Value(localeFormat(t.rangeFormat, {minimum, maximum})), t.rangeLabelKey);
        minLabel = localeFormat(t.minMaxFormat, {minimum});
        maxLabel = localeFormat(t.minMaxFormat, {maximum});
        average7Label = localeFormat(t.average7Format, {average7});
        range7Label = localeFormat(t.range7Format, {minimum7, maximum7});
        if (average7 > 0.0f) {
            // The trend threshold applies to the single-precision difference.
            double d = static_cast<double>(average - average7);
            if (d >= 0.1) {
                difLabel = localeFormat(t.risingFormat, {d});
                difColour = 1;
            } else if (d <= -0.1) {
                difLabel = localeFormat(t.fallingFormat, {-d});
                difColour = 2;
            }
        }
    }
    record.setObject(Value(averageLabel), t.averageLabelKey);
    if (t.widgetLabelKey) record.setObject(Value(widgetLabel), t.widgetLabelKey);
    record.setObject(Value(minLabel), t.minLabelKey);
    record.setObject(Value(maxLabel), t.maxLabelKey);
    record.setObject(Value(average7Label), t.average7LabelKey);
    record.setObject(Value(range7Label), t.range7LabelKey);
    record.setObject(Value(difLabel), keys::kDifLabel);
    record.setObject(Value(difColour), keys::kDifColour);

    record.setObject(Value(stringWithFormat("%@ %@. %@ %@ %@ %@.",
                                            {localized(t.averageOpening), averageLabel, localized(t.rangeOpening),
                                             minLabel, localized("to"), maxLabel})),
                     t.sentenceKey);

    for (int i = 0; i < 6; ++i) record.setObject(Value(v[i]), t.valueKeys[i]);

    std::string names[6];
    for (int i = 0; i < 3; ++i) {
        names[i] = localized(t.pasteNames[i]);
        names[i + 3] = stringWithFormat("%@-7", {names[i]});
    }
    record.setObject(
        Value(localeFormat("{\"%@\":\"%.1f\", \"%@\":\"%.0f\", \"%@\": \"%.0f\", \"%@\":\"%.1f\", \"%@\":\"%.0f\" , "
                           "\"%@\":\"%.0f\"}",
                           {names[0], average, names[1], minimum, names[2], maximum, names[3], average7, names[4],
                            minimum7, names[5], maximum7})),
        keys::kPasteItem);
    return record;
}

GroupMetrics::Record GroupMetrics::requestSpO2() {
    static const VitalTable table{
        .nestedKey = keys::kSpO2Dict,
        .title = "Sleep SpO2",
        .valueKeys = {keys::kAverageSpO2, keys::kMinSpO2, keys::kMaxSpO2, keys::kAverageSpO27, keys::kMinSpO27,
                      keys::kMaxSpO27},
        .averageLabelKey = keys::kAverageSpO2Label,
        .widgetLabelKey = nullptr,
        .rangeLabelKey = keys::kAverageSpO2RangeLabel,
        .minLabelKey = keys::kMinSpO2Label,
        .maxLabelKey = keys::kMaxSpO2Label,
        .average7LabelKey = keys::kAverageSpO2Label7,
        .range7LabelKey = keys::kAverageSpO2RangeLabel7,
        .sentenceKey = keys::kTodaysSpO2Info,
        .unit = nullptr,
        .averageFormat = "%.1f%%",
        .widgetFormat = nullptr,
        .rangeFormat = "%.0f%% - %.0f%%",
        .minMaxFormat = "%.0f%%",
        .average7Format = "\u2466 %.1f%%",
        .range7Format = "\u2466 %.0f%% - %.0f%%",
        .risingFormat = "%.1f%%\u2197",
        .fallingFormat = "%.1f%%\u2198",
        .averageOpening = "Today's average SpO2 is",
        .rangeOpening = "Today's SpO2 range is",
        .pasteNames = {"SpO2", "MinSpO2", "MaxSpO2"},
    };
    return vitalRecord(table);
}

GroupMetrics::Record GroupMetrics::requestRespRate() {
    static const VitalTable table{
        .nestedKey = keys::kRespRateDict,
        .title = "Respiration Rate",
        .valueKeys = {keys::kAverageRespRate, keys::kMinRespRate, keys::kMaxRespRate, keys::kAverageRespRate7,
                      keys::kMinRespRate7, keys::kMaxRespRate7},
        .averageLabelKey = keys::kAverageRespRateLabel,
        .widgetLabelKey = keys::kAverageRespRateWidgetLabel,
        .rangeLabelKey = keys::kAverageRespRateRangeLabel,
        .minLabelKey = keys::kMinRespRateLabel,
        .maxLabelKey = keys::kMaxRespRateLabel,
        .average7LabelKey = keys::kAverageRespRateLabel7,
        .range7LabelKey = keys::kAverageRespRateRangeLabel7,
        .sentenceKey = keys::kTodaysRespRateInfo,
        .unit = "BrPM",
        .averageFormat = "%.1f %@",
        .widgetFormat = "%.1f ",
        .rangeFormat = "%.1f - %.1f",
        .minMaxFormat = "%.1f",
        .average7Format = "\u2466 %.1f",
        .range7Format = "\u2466 %.1f - %.1f",
        .risingFormat = "%.1f\u2197",
        .fallingFormat = "%.1f\u2198",
        .averageOpening = "Today's average respiration rate is",
        .rangeOpening = "Today's respiration range is",
        .pasteNames = {"RespRate", "MinRespRate", "MaxRespRate"},
    };
    return vitalRecord(table);
}

GroupMetrics::Record GroupMetrics::requestWristTemp() {
    prepare();
    auto bank = storeDictionary(keys::kBankDict);
    if (!bank) return kNone;
    if (!isCurrentDay(bank->objectForKey(keys::kWristTempKey), *bank)) return kNone;

    const float score = floatFor(*bank, keys::kWristTempScore);
    const float today = floatFor(*bank, keys::kWristTempTodayValue);
    const float baseline = floatFor(*bank, keys::kWristTempAverage28);
    if (!(today > 0.0f && baseline > 0.0f)) return kNone;
    // The threshold applies to the single-precision difference.
    const double d = static_cast<double>(today - baseline);

    Dictionary record;
    std::string todayLabel = localeFormat("%.2f\u00B0", {today});
    record.setObject(Value(todayLabel), keys::kWristTempTodayLabel);
    record.setObject(Value(localeFormat("%.2f\u00B0", {baseline})), keys::kWristTempAverage28Label);

    std::string difLabel, sentence;
    if (d >= 0.01) {
        difLabel = localeFormat("%.2f\u00B0\u2197", {d});
        sentence = stringWithFormat(localized("Today's temperature is %@. %@ %@ baseline."),
                                    {todayLabel, localeFormat("+%.2f\u00B0", {d}), localized("above")});
    } else if (d <= -0.01) {
        difLabel = localeFormat("%.2f\u00B0\u2198", {-d});
        sentence = stringWithFormat(localized("Today's temperature is %@. %@ %@ baseline."),
                                    {todayLabel, localeFormat("%.2f\u00B0", {d}), localized("below")});
    } else {
        difLabel = localeFormat("%.2f\u00B0=", {0.0});
        sentence = stringWithFormat(localized("Today's temperature is %@. No change from baseline."), {todayLabel});
    }
    record.setObject(Value(difLabel), keys::kWristTempDifLabel);
    record.setObject(Value(sentence), keys::kWristTempTodayInfo);
    record.setObject(Value(score), keys::kWristTempScore);
    record.setObject(Value(localeFormat("{\"%@\":\"%.2f\", \"%@\":\"%.2f\", \"%@\": \"%.2f\"}",
                                        {localized("Temperature"), today, localized("Baseline"), baseline,
                                         localized("Variance"), d})),
                     keys::kPasteItem);
    return record;
}

}  // namespace velmorant::metrics
