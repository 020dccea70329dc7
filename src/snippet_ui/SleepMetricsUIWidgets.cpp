// What the home-screen widgets read: the records' fields mirrored into the
// shared store under "Swift-" keys, and the records' pictures.
#include "snippet_ui/SleepMetricsUI.h"

#include "metrics/RecordKeys.h"
#include "platform/text/Text.h"

#include <utility>
#include <vector>

namespace velmorant::snippet_ui {
namespace keys = metrics::keys;

using platform::Dictionary;
using platform::PreferencesStore;
using platform::Value;

namespace {

struct Placeholder {
    std::string_view key;
    std::string_view text;
};

// A range label as the small widgets show it: "95% - 99%" becomes "95-99".
struct CompactRange {
    std::string_view rangeKey;
    bool dropPercent;
};

std::string swiftKey(std::string_view recordKey) { return "Swift-" + std::string(recordKey); }

Value compactRange(const Dictionary& record, const CompactRange& compact) {
    const Value* range = record.objectForKey(compact.rangeKey);
    if (!range || !range->string()) return Value();
    std::string text = platform::stringByReplacing(*range->string(), " ", "");
    if (compact.dropPercent) text = platform::stringByReplacing(text, "%", "");
    return Value(text);
}

// With a record every field is written (an absent one removes its store entry)
// and the compact range follows the range label; without one only the
// placeholders are written, so the last compact range, colour and tints stay.
// Each write is its own locked read-modify-write, keeping every other key.
void writeMirror(PreferencesStore& store, const SleepMetricsUI::Record& record,
                 std::initializer_list<std::string_view> fields, std::initializer_list<Placeholder> placeholders,
                 std::optional<CompactRange> compact = std::nullopt) {
    if (!record) {
        store.removeObjectForKey(swiftKey(keys::kHasData));
        for (const Placeholder& p : placeholders) store.setObject(Value(p.text), swiftKey(p.key));
        return;
    }
    store.setObject(Value("1"), swiftKey(keys::kHasData));
    for (std::string_view field : fields) {
        const Value* value = record->objectForKey(field);
        store.setObject(value ? *value : Value(), swiftKey(field));
        if (compact && field == compact->rangeKey)
            store.setObject(compactRange(*record, *compact), swiftKey(std::string(field) + "Compact"));
    }
}

// Readiness and sleep fuel share their keys: the last one written is shown.
void writeScoreMirror(PreferencesStore& store, const SleepMetricsUI::Record& record) {
    writeMirror(store, record,
                {keys::kHrvDifLabel, keys::kHrvLabel, keys::kWakingDifLabel, keys::kWakingLabel, keys::kStarsLabel,
                 keys::kWakingTint, keys::kHrvTint},
                {{keys::kHrvDifLabel, ""},
                 {keys::kHrvLabel, "--"},
                 {keys::kWakingDifLabel, ""},
                 {keys::kWakingLabel, "--"},
                 {keys::kStarsLabel, ""}});
}

platform::ImagePtr recordImage(const SleepMetricsUI::Record& record) {
    const Value* image = record ? record->objectForKey(keys::kRingsImage) : nullptr;
    return image ? image->image() : nullptr;
}

}  // namespace

// The home-screen widget and the accessory widget can share one object, so
// each widget-facing operation says which one is asking: widget mode, once
// on, stays on (later plain requests draw at widget size), while the
// accessory flag follows the asking widget so that neither gets the other's
// picture size.
void SleepMetricsUI::setWidgetFlags(bool accessory) {
    widgetMode = true;
    widgetAccessoryMode = accessory;
}

platform::ImagePtr SleepMetricsUI::imageOrWait(const Record& record) {
    if (platform::ImagePtr image = recordImage(record)) return image;
    return platform_.imageNamed("WidgetWait");
}

void SleepMetricsUI::requestSpO2ForSwift() {
    setWidgetFlags(false);
    Record record = requestSpO2();
    writeMirror(*platform_.suiteNamed(platform::kAppGroupSuite), record,
                {keys::kAverageSpO2Label, keys::kAverageSpO2RangeLabel, keys::kDifLabel, keys::kDifColour},
                {{keys::kAverageSpO2Label, "--"}, {keys::kAverageSpO2RangeLabel, "--"}, {keys::kDifLabel, ""}},
                CompactRange{keys::kAverageSpO2RangeLabel, true});
}

void SleepMetricsUI::requestRespRateForSwift() {
    setWidgetFlags(false);
    Record record = requestRespRate();
    // The widgets read the average from the widget label but clear it under
    // the plain label; both keys stay as the widgets know them.
    writeMirror(*platform_.suiteNamed(platform::kAppGroupSuite), record,
                {keys::kAverageRespRateWidgetLabel, keys::kAverageRespRateRangeLabel, keys::kDifLabel},
                {{keys::kAverageRespRateLabel, "--"}, {keys::kAverageRespRateRangeLabel, "--"}, {keys::kDifLabel, ""}},
                CompactRange{keys::kAverageRespRateRangeLabel, false});
}

void SleepMetricsUI::requestReadinessForSwift() {
    setWidgetFlags(false);
    Record record = requestReadiness();
    writeScoreMirror(*platform_.suiteNamed(platform::kAppGroupSuite), record);
}

void SleepMetricsUI::requestOctaneForSwift() {
    setWidgetFlags(false);
    Record record = requestOctane();
    writeScoreMirror(*platform_.suiteNamed(platform::kAppGroupSuite), record);
}

void SleepMetricsUI::requestLatestBedtimeForSwift() {
    setWidgetFlags(false);
    Record record = requestLatestBedtime();
    writeMirror(*platform_.suiteNamed(platform::kAppGroupSuite), record,
                {keys::kLatestBedTime, keys::kWakeTimeLabel, keys::kBedTime}, {});
}

void SleepMetricsUI::requestSleepBankForSwift() {
    // The flags stay as they are, and the record is never none: the labels are
    // written (or, without a tracked night, removed) every time.
    Record record = requestSleepBankRings();
    writeMirror(*platform_.suiteNamed(platform::kAppGroupSuite), record, {keys::kSleepTimeLabel, keys::kBankTimeLabel},
                {{keys::kSleepTimeLabel, "--"}, {keys::kBankTimeLabel, "--"}});
}

platform::ImagePtr SleepMetricsUI::swiftReadinessImage() {
    setWidgetFlags(false);
    return imageOrWait(requestReadiness());
}

platform::ImagePtr SleepMetricsUI::swiftOctaneImage() {
    setWidgetFlags(false);
    return imageOrWait(requestOctane());
}

platform::ImagePtr SleepMetricsUI::swiftSpO2Image() {
    setWidgetFlags(false);
    return imageOrWait(requestSpO2());
}

platform::ImagePtr SleepMetricsUI::swiftRespRateImage() {
    setWidgetFlags(false);
    return imageOrWait(requestRespRate());
}

platform::ImagePtr SleepMetricsUI::swiftWristTempImage() {
    setWidgetFlags(false);
    return imageOrWait(requestWristTemp());
}

platform::ImagePtr SleepMetricsUI::swiftSleepRingsImage() {
    setWidgetFlags(false);
    return imageOrWait(requestQuality());
}

platform::ImagePtr SleepMetricsUI::swiftSleepRingsAccessoryImage() {
    setWidgetFlags(true);
    return imageOrWait(requestQuality());
}

platform::ImagePtr SleepMetricsUI::swiftSleepBankImage() {
    setWidgetFlags(false);
    return recordImage(requestSleepBankRings());
}

platform::ImagePtr SleepMetricsUI::swiftSleepBankAccessoryImage() {
    setWidgetFlags(true);
    return recordImage(requestSleepBankRings());
}

platform::ImagePtr SleepMetricsUI::swiftBedtimeImage() {
    setWidgetFlags(false);
    return imageOrWait(requestLatestBedtime());
}

}  // namespace velmorant::snippet_ui
