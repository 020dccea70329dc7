// Readiness and sleep fuel: HRV and heart rate against their baselines.
#include "metrics/GroupMetrics.h"

#include "metrics/RecordKeys.h"
#include "platform/text/Text.h"

#include <cmath>

namespace velmorant::metrics {

using platform::Dictionary;
using platform::stringWithFormat;
using platform::Value;

namespace {

struct Grade {
    int index;
    float stars;
};

// The seven-step ladder. The comparisons against 1.5 and 0.5 are made in
// single precision, the others in double, and the two divisors are the double
// differences of their steps: the grades the main app shows depend on it.
Grade gradeFor(float v) {
    const double dv = v;
    if (v > 1.5f) return {0, 6.0f};
    if (dv > 1.2) return {1, static_cast<float>((dv - 1.2) / 0.30000000000000004 + 5)};
    if (dv > 0.95) return {2, static_cast<float>((dv - 0.95) * 4 + 4)};
    if (dv > 0.825) return {3, static_cast<float>((dv - 0.825) * 8 + 3)};
    if (dv > 0.7) return {4, static_cast<float>((dv - 0.7) * 8 + 2)};
    if (v > 0.5f) return {5, static_cast<float>((dv - 0.5) / 0.19999999999999996 + 1)};
    return {6, v + v};
}

const char* const kReadinessWords[7] = {"Superb", "Optimal", "Great", "Good", "OK", "Low", "Rest"};
const char* const kReadinessGlyphs[7] = {
    "\U0001F947",
    "\u2605\u2605\u2605\u2605\u2605",
    "\u2605\u2605\u2605\u2605\u2B52",
    "\u2605\u2605\u2605\u2B52\u2B52",
    "\u2605\u2605\u2B52\u2B52\u2B52",
    "\u2605\u2B52\u2B52\u2B52\u2B52",
    "\U0001F486\u200D\u2642\uFE0F",
};
const char* const kFuelWords[7] = {"Rocket fuel", "Jet fuel", "Premium", "Plus", "Regular", "Poor", "Bad"};

std::string withoutBlanks(const std::string& text) { return platform::stringByReplacing(text, " ", ""); }

}  // namespace

GroupMetrics::Record GroupMetrics::requestOctane() {
    prepare();
    auto bank = storeDictionary(keys::kBankDict);
    if (!bank) return std::nullopt;
    const Value* octaneValue = bank->objectForKey(keys::kOctaneDict);
    const Dictionary* octane = octaneValue ? octaneValue->dictionary() : nullptr;
    if (!octane || !isCurrentDay(octane->objectForKey(keys::kKey), *bank)) return std::nullopt;
    ReadinessInputs in{floatFor(*octane, keys::kHrvTodayVal), floatFor(*octane, keys::kHrvAverage),
                       floatFor(*octane, keys::kBpmTodayVal), floatFor(*octane, keys::kBpmAverage)};
    return scoreRecord(ScoreKind::Fuel, in);
}

GroupMetrics::Record GroupMetrics::requestReadiness() {
    prepare();
    auto bank = storeDictionary(keys::kBankDict);
    if (!bank) return std::nullopt;
    const Value* readyValue = bank->objectForKey(keys::kReadyDict);
    const Dictionary* ready = readyValue ? readyValue->dictionary() : nullptr;
    if (!ready) return std::nullopt;

    float watchHRV = 0.0f, watchBPM = 0.0f;
    if (auto track = storeDictionary(keys::kWatchTrackDict); track && watchDictIsValid()) {
        watchHRV = floatFor(*track, keys::kRawHRVVal);
        watchBPM = floatFor(*track, keys::kRawWakingVal);
    }
    const bool watchHasValues = watchHRV > 0.0f || watchBPM > 0.0f;
    const bool match = isCurrentDay(ready->objectForKey(keys::kKey), *bank);
    if (!watchHasValues && !match) return std::nullopt;

    ReadinessInputs in{floatFor(*ready, keys::kHrvTodayVal), floatFor(*ready, keys::kHrvAverage),
                       floatFor(*ready, keys::kBpmTodayVal), floatFor(*ready, keys::kBpmAverage)};
    const bool storedDayWins = match && (in.hrv != 0.0f || in.bpm != 0.0f);
    if (watchHasValues && !storedDayWins) {
        in.hrv = watchHRV;
        in.bpm = watchBPM;
        // Without a baseline yet, the watch's own value stands in (ratio 1).
        if (in.hrvBaseline == 0.0f) in.hrvBaseline = watchHRV;
        if (in.bpmBaseline == 0.0f) in.bpmBaseline = watchBPM;
    }
    return scoreRecord(ScoreKind::Readiness, in);
}

GroupMetrics::ScorePart GroupMetrics::hrvPart(float h, float H) const {
    ScorePart part;
    if (!(h > 0.0f && H > 0.0f)) return part;
    const float r = h / H;
    // The step at a ratio of exactly 1 (0.75 just below, 0.7 at 1) is what the app has always shown.
    if (r >= 1.0f) part.points = static_cast<float>(static_cast<double>(r - 1.0f) - 0.1 + 0.8);
    else part.points = (r - 1.0f) + 0.75f;
    if (r >= 1.0f && h - H > 0.5f) part.difference = localeFormat("%.0f %@", {h - H, localized("above baseline")});
    else if (r < 1.0f && H - h > 0.5f) part.difference = localeFormat("%.0f %@", {H - h, localized("below baseline")});
    else part.difference = localized("No change");
    return part;
}

GroupMetrics::ScorePart GroupMetrics::wakingPart(float b, float B) const {
    ScorePart part;
    if (!(b > 0.0f && B > 0.0f)) return part;
    const float q = b / B;
    if (q >= 1.0f) {
        const float x = (q - 1.0f) * 100.0f;
        const float s = x > 10.0f ? 1.0f : x / 10.0f;
        part.points = static_cast<float>(std::fma(static_cast<double>(s), -0.5, 0.95));
    } else {
        const float x = (1.0f - q) * 100.0f;
        const float s = x > 10.0f ? 1.0f : x / 10.0f;
        part.points = s * 0.8f + 0.8f;
    }
    if (q >= 1.0f && b - B > 0.5f) part.difference = localeFormat("%.0f %@", {b - B, localized("above baseline")});
    else if (q < 1.0f && B - b > 0.5f) part.difference = localeFormat("%.0f %@", {B - b, localized("below baseline")});
    else part.difference = localized("No change");
    return part;
}

GroupMetrics::Record GroupMetrics::scoreRecord(ScoreKind kind, const ReadinessInputs& in) {
    const float h = in.hrv, H = in.hrvBaseline, b = in.bpm, B = in.bpmBaseline;
    const bool hasHRV = h > 0.0f && H > 0.0f;
    const bool hasBPM = b > 0.0f && B > 0.0f;
    const auto [hrvPoints, hrvDif] = hrvPart(h, H);
    const auto [wakingPoints, wakingDif] = wakingPart(b, B);

    float v;
    if (hrvPoints > 0.0f && wakingPoints > 0.0f) v = (hrvPoints + wakingPoints) * 0.5f;
    else if (hrvPoints > 0.0f) v = hrvPoints;
    else if (wakingPoints > 0.0f) v = wakingPoints;
    else return std::nullopt;

    const Grade grade = gradeFor(v);
    const bool readiness = kind == ScoreKind::Readiness;
    const bool glyphs = readiness && groupPrefs_ && groupPrefs_->boolForKey(keys::kReadyStars);
    const char* const* words = !readiness ? kFuelWords : glyphs ? kReadinessGlyphs : kReadinessWords;
    const std::string rating = localized(words[grade.index]);

    const std::string opening =
        platform::capitalizedString(localized(readiness ? "Today's Readiness" : "Sleep Fuel Rating"));
    const std::string starsWord = localized("stars");
    const char* joiner = starsWord == "stars" ? " is" : ":";
    std::string sentence;
    if (glyphs) {
        sentence = stringWithFormat("%@%@ %@ %@.", {opening, joiner, localeFormat("%.2f", {grade.stars}), starsWord});
    } else {
        sentence = stringWithFormat("%@%@ %@.", {opening, joiner, platform::lowercaseString(rating)});
    }

    Dictionary record;
    record.setObject(Value(rating), keys::kRating);
    record.setObject(Value(sentence), keys::kTodaysReadinessStars);
    record.setObject(Value(grade.stars), keys::kStarsValue);
    record.setObject(Value(v), keys::kPercentage);
    record.setObject(Value(hasHRV ? localeFormat("%.0f ms", {h}) : std::string("--")), keys::kHrvLabel);
    record.setObject(Value(hrvDif), keys::kHrvDifLabel);
    record.setObject(Value(hasBPM ? localeFormat("%.0f %@", {b, localized("bpm")}) : std::string("--")),
                     keys::kWakingLabel);
    record.setObject(Value(wakingDif), keys::kWakingDifLabel);
    record.setObject(Value(hrvPoints), keys::kHrvPoints);
    record.setObject(Value(wakingPoints), keys::kWakingPoints);
    // A higher HRV and a lower heart rate are the good directions.
    record.setObject(Value(hasHRV ? (h >= H ? 2 : 1) : 0), keys::kHrvTint);
    record.setObject(Value(hasBPM ? (b >= B ? 1 : 2) : 0), keys::kWakingTint);

    const char* baselineHRV = readiness ? "Baseline HRV" : "Baseline Sleep HRV";
    const char* baselineBPM = readiness ? "Baseline Waking BPM" : "Baseline Sleep BPM";
    record.setObject(
        Value(localeFormat("{\"%@\":\"%.2f\", \"%@\":\"%.0f\", \"%@\": \"%.0f\", \"%@\":\"%.0f\", \"%@\":\"%.0f\", "
                           "\"%@\":\"%@\"}",
                           {platform::capitalizedString(starsWord), grade.stars, localized("HRV"), h,
                            localized("bpm"), b, withoutBlanks(localized(baselineHRV)), H,
                            withoutBlanks(localized(baselineBPM)), B, platform::capitalizedString(localized("Rating")),
                            rating})),
        keys::kPasteItem);
    return record;
}

}  // namespace velmorant::metrics
