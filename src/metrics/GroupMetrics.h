#pragma once

#include "format/FormatTools.h"
#include "platform/core/Date.h"
#include "platform/services/Platform.h"
#include "platform/store/PreferencesStore.h"
#include "platform/text/StringFormat.h"
#include "platform/core/Value.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmorant::metrics {

// Reads the figures the main app leaves in the app group's shared store and
// turns each measure into a metric record (labels, numbers, a spoken sentence
// and a copyable text). Nothing is kept between requests apart from the store
// handle and the formatter, both made on first use; every request reads the
// store afresh. One object serves one thread.
class GroupMetrics {
public:
    // A metric record; none when there is no data for the current day.
    using Record = std::optional<platform::Dictionary>;

    explicit GroupMetrics(platform::Platform& platform);
    ~GroupMetrics();
    GroupMetrics(const GroupMetrics&) = delete;
    GroupMetrics& operator=(const GroupMetrics&) = delete;

    // Sleep rings.
    Record requestQuality();
    // Mirrors the rings labels into the shared store for the widgets.
    void requestQualityForSwift();

    // Wellness records.
    Record requestSpO2();
    Record requestRespRate();
    Record requestWristTemp();
    Record requestReadiness();
    Record requestOctane();

    // Sleep bank and bedtimes.
    Record requestSleepBank();
    Record returnPreviousSleepBank();
    Record requestConsistencyDict();

    // Whether the hours between the night hour and midnight should still show
    // the night that has just ended.
    bool shouldReportPreviousDay();
    // Whether the watch has synchronised since the current night began.
    bool watchDictIsValid();

    // Product configuration. These read whatever store handle is already open
    // (none reads as an empty store): call them after a request has opened it.
    // A missing (or unreadable) setting gives -1, as the app reads it.
    float getVelmorantConfigValueForKey(std::string_view key);
    // The same setting, none when it is missing or unreadable (a stored -1 stays -1).
    [[nodiscard]] std::optional<float> configValueForKey(std::string_view key);
    // A switch is on by being present, whatever its value.
    bool getVelmorantSwitchValueForKey(std::string_view key);

    // The start of the current night for a night hour; an hour outside 0-23
    // is not a usable setting and stands for the default 21.
    platform::Date getFromDateForNightHour(long hour);

private:
    // Opens the formatter and the store handle when they are not open yet.
    void prepare();
    format::FormatTools& formatTools();

    // The store's dictionary under `key`; none when absent or of another kind.
    [[nodiscard]] std::optional<platform::Dictionary> storeDictionary(std::string_view key);

    // Night hour from the configuration (truncated, 21 when missing) and from
    // "bankDict" (21 when missing); unusable hours read as 21.
    long configNightHour();
    static long bankNightHour(const platform::Dictionary& bank);
    // "yyyyMMdd" of the calendar day on which the current night ends.
    std::string currentDayKey(const platform::Dictionary& bank);
    // Whether a stored day key belongs to the current night.
    bool isCurrentDay(const platform::Value* key, const platform::Dictionary& bank);
    long hourNow();

    // Lenient number reading: numbers and numeric text read as Foundation
    // does; other kinds, NaN and infinities read as absent.
    [[nodiscard]] static std::optional<double> numberFor(const platform::Value* value);
    [[nodiscard]] static std::optional<double> numberFor(const platform::Dictionary& dict, std::string_view key);
    static float floatFor(const platform::Dictionary& dict, std::string_view key, float fallback = 0.0f);
    // Three fields of a "|"-joined string; all 0 unless there are at least three.
    static std::vector<float> splitTriple(const platform::Value* value);

    // The text for `key` in the app's string table (the key itself when untranslated).
    std::string localized(std::string_view key) const;
    // Formats numbers for the user's locale.
    std::string localeFormat(std::string_view format, const std::vector<platform::FormatArg>& args) const;

    struct VitalTable;
    Record vitalRecord(const VitalTable& table);

    struct ReadinessInputs {
        float hrv, hrvBaseline, bpm, bpmBaseline;
    };
    enum class ScoreKind { Readiness, Fuel };
    Record scoreRecord(ScoreKind kind, const ReadinessInputs& in);
    // One side of a score: its points (0 without figures) and how far it is from its baseline.
    struct ScorePart {
        float points = 0.0f;
        std::string difference;
    };
    ScorePart hrvPart(float hrv, float baseline) const;
    ScorePart wakingPart(float bpm, float baseline) const;

    // The steps of the sleep bank: the wake time fixed for the coming morning (none when not
    // fixed), the weighted seven-night balance and tonight's forecast (none without a usable
    // night), and the latest bedtime that gets the forecast in before `wake`.
    [[nodiscard]] std::optional<platform::Date> fixedWakeTime(long nightHour, platform::Date base, long hour);
    struct BankBalance {
        float balance;
        float forecast;
    };
    [[nodiscard]] std::optional<BankBalance> weighNights(const platform::Dictionary& bank, platform::Date base,
                                                         float required, float watchSleep);
    platform::Date latestBedtime(platform::Date wake, platform::Date nightStart, float requiredHours, float efficiency,
                                 float forecast);
    void cacheSleepBank(const platform::Dictionary& record);
    std::string sleepBankPasteItem(const std::string& latestBedTime, const std::string& wakeTime, float untilBed,
                                   float forecast);

    platform::Platform& platform_;
    // Declared first so it is released after the formatter.
    std::shared_ptr<platform::PreferencesStore> groupPrefs_;
    std::unique_ptr<format::FormatTools> formatTools_;
};

}  // namespace velmorant::metrics
