// Sleep rings: the watch-tracked night against the sleep goal.
#include "metrics/GroupMetrics.h"

#include "metrics/RecordKeys.h"
#include "platform/text/Text.h"

#include <algorithm>

namespace velmorant::metrics {
using format::FormatTools;

using platform::Dictionary;
using platform::stringWithFormat;
using platform::Value;

GroupMetrics::Record GroupMetrics::requestQuality() {
    prepare();
    auto track = storeDictionary(keys::kWatchTrackDict);
    if (!track || !watchDictIsValid()) return std::nullopt;

    const std::vector<float> rating = splitTriple(track->objectForKey(keys::kRawRingRating));
    const std::vector<float> amounts = splitTriple(track->objectForKey(keys::kRawRingValues));
    const float q = rating[0], d = rating[1], h = rating[2];
    const float qualityTime = amounts[0], deepTime = amounts[1], bpm = amounts[2];
    const bool showStages = track->contains(keys::kShowStages);

    // A goal under four hours is not a real goal: the default eight hours stand in.
    const float requiredHours = getVelmorantConfigValueForKey(keys::kRequiredHours);
    float t = 0.0f, s = 0.0f;
    if (const Value* sleep = track->objectForKey(keys::kRawSleepTime)) {
        const float requiredSeconds = requiredHours < 4.0f ? 28800.0f : requiredHours * 3600.0f;
        t = static_cast<float>(numberFor(sleep).value_or(0.0));
        s = t / requiredSeconds;
    }

    int closed = 0;
    for (float ring : {s, q, d, h}) closed += ring >= 1.0f ? 1 : 0;
    const float r = (std::min(s, 1.0f) + std::min(q, 1.0f) + std::min(d, 1.0f) + std::min(h, 1.0f)) * 0.25f;

    std::string ringsText;
    switch (closed) {
        case 0: ringsText = localized("No Sleep Rings Closed"); break;
        case 1: ringsText = localized("1 Sleep Ring Closed"); break;
        case 4: ringsText = localized("All Sleep Rings Closed!"); break;
        default: ringsText = stringWithFormat("%d %@", {closed, localized("Sleep Rings Closed")}); break;
    }
    ringsText = formatTools().sentenceCapitalizedString(ringsText);
    const char* stop = closed == 4 ? "" : ".";

    const float ratingPercent = r * 100.0f;
    const std::string ratingName = localized("Sleep Rating");
    std::string sentence =
        ratingName == "Sleep Rating"
            ? stringWithFormat("%@%@ Today's sleep rating is %.0f%%.", {ringsText, stop, ratingPercent})
            : stringWithFormat("%@%@ %@: %.0f%%.", {ringsText, stop, ratingName, ratingPercent});

    Dictionary record;
    record.setObject(Value(s), keys::kRingSleepPercent);
    record.setObject(Value(q), keys::kRingQualityPercent);
    record.setObject(Value(d), keys::kRingDeepPercent);
    record.setObject(Value(h), keys::kRingBPMPercent);
    record.setObject(Value(r), keys::kSleepRating);
    FormatTools& ft = formatTools();
    record.setObject(Value(ft.formattedTimeInterval(t)), keys::kRingSleepLabel);
    record.setObject(Value(ft.formattedTimeInterval(qualityTime)), keys::kRingQualityLabel);
    record.setObject(Value(ft.formattedTimeInterval(deepTime)), keys::kRingDeepLabel);
    record.setObject(Value(localeFormat("%.0f", {bpm})), keys::kRingBPMLabel);
    record.setObject(Value(sentence), keys::kSiriLabel);

    if (showStages) record.setObject(Value("1"), keys::kShowStages);
    const std::string qualityName = localized(showStages ? "REM" : "Quality");
    const std::string sleepName = localized("Sleep");
    const std::string deepName = localized("Deep");
    const std::string bpmName = localized("bpm");
    record.setObject(
        Value(localeFormat("{\"%@%%\":\"%.0f\", \"%@%%\":\"%.0f\", \"%@%%\": \"%.0f\", \"%@%%\":\"%.0f\", "
                           "\"%@\":\"%.2f\", \"%@\":\"%.2f\", \"%@\": \"%.2f\", \"%@\":\"%.0f\", \"%@\":\"%.0f\"}",
                           {sleepName, s * 100.0f, qualityName, q * 100.0f, deepName, d * 100.0f, bpmName,
                            h * 100.0f, sleepName, t / 3600.0f, qualityName, qualityTime / 3600.0f, deepName,
                            deepTime / 3600.0f, bpmName, bpm, platform::stringByReplacing(ratingName, " ", ""),
                            ratingPercent})),
        keys::kPasteItem);
    return record;
}

void GroupMetrics::requestQualityForSwift() {
    Record record = requestQuality();
    // Its own handle on the suite, so the widgets' copy is written even when
    // this object's handle has not been opened.
    std::shared_ptr<platform::PreferencesStore> store = platform_.suiteNamed(platform::kAppGroupSuite);
    auto key = [](const char* name) { return stringWithFormat("Swift-%@", {name}); };
    const char* labels[] = {keys::kRingSleepLabel, keys::kRingQualityLabel, keys::kRingDeepLabel, keys::kRingBPMLabel};
    if (!record) {
        store->removeObjectForKey(key(keys::kHasData));
        for (const char* name : labels) store->setObject(Value("--"), key(name));
        return;
    }
    auto label = [&](const char* name) -> std::optional<std::string> {
        const Value* value = record->objectForKey(name);
        if (value && value->string()) return *value->string();
        return std::nullopt;
    };
    store->setObject(Value("1"), key(keys::kHasData));
    store->setObject(Value(label(keys::kRingSleepLabel)), key(keys::kRingSleepLabel));
    store->setObject(Value(stringWithFormat(record->contains(keys::kShowStages) ? "\u24C7 %@" : "\u2605 %@",
                                            {label(keys::kRingQualityLabel)})),
                     key(keys::kRingQualityLabel));
    store->setObject(Value(label(keys::kRingDeepLabel)), key(keys::kRingDeepLabel));
    store->setObject(Value(label(keys::kRingBPMLabel)), key(keys::kRingBPMLabel));
}

}  // namespace velmorant::metrics
