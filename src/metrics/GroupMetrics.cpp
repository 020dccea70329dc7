#include "metrics/GroupMetrics.h"
#include "metrics/RecordKeys.h"

#include <cmath>
#include <limits>

namespace velmorant::metrics {
using format::FormatTools;

using platform::Date;
using platform::Dictionary;
using platform::Value;

namespace {

constexpr long kDefaultNightHour = 21;

// A night hour must be an hour of the day; anything else is a damaged setting.
long usableNightHour(long hour) { return hour < 0 || hour > 23 ? kDefaultNightHour : hour; }

}  // namespace

GroupMetrics::GroupMetrics(platform::Platform& platform) : platform_(platform) {}

GroupMetrics::~GroupMetrics() {
    // The formatter goes before the store handle.
    formatTools_.reset();
    groupPrefs_.reset();
}

void GroupMetrics::prepare() {
    if (!formatTools_) formatTools_ = std::make_unique<FormatTools>(platform_);
    if (!groupPrefs_) groupPrefs_ = platform_.suiteNamed(platform::kAppGroupSuite);
}

FormatTools& GroupMetrics::formatTools() {
    if (!formatTools_) formatTools_ = std::make_unique<FormatTools>(platform_);
    return *formatTools_;
}

std::optional<Dictionary> GroupMetrics::storeDictionary(std::string_view key) {
    if (!groupPrefs_) return std::nullopt;
    Value value = groupPrefs_->objectForKey(key);
    if (const Dictionary* dict = value.dictionary()) return *dict;
    return std::nullopt;
}

std::optional<double> GroupMetrics::numberFor(const Value* value) {
    if (!value) return std::nullopt;
    switch (value->kind()) {
        case Value::Kind::Boolean:
        case Value::Kind::Integer:
        case Value::Kind::Real:
        case Value::Kind::String: break;
        default: return std::nullopt;
    }
    double v = value->doubleValue();
    // Beyond the float range a single-precision reading would be infinite.
    if (!std::isfinite(v) || std::fabs(v) > std::numeric_limits<float>::max()) return std::nullopt;
    return v;
}

std::optional<double> GroupMetrics::numberFor(const Dictionary& dict, std::string_view key) {
    return numberFor(dict.objectForKey(key));
}

float GroupMetrics::floatFor(const Dictionary& dict, std::string_view key, float fallback) {
    auto v = numberFor(dict, key);
    return v ? static_cast<float>(*v) : fallback;
}

std::vector<float> GroupMetrics::splitTriple(const Value* value) {
    std::vector<float> fields(3, 0.0f);
    const std::string* text = value ? value->string() : nullptr;
    if (!text) return fields;
    std::vector<std::string_view> parts;
    std::string_view rest(*text);
    for (;;) {
        auto bar = rest.find('|');
        parts.push_back(rest.substr(0, bar));
        if (bar == std::string_view::npos) break;
        rest.remove_prefix(bar + 1);
    }
    if (parts.size() < 3) return fields;
    for (std::size_t i = 0; i < 3; ++i) {
        Value field{parts[i]};
        fields[i] = static_cast<float>(numberFor(&field).value_or(0.0));
    }
    return fields;
}

std::string GroupMetrics::localized(std::string_view key) const { return platform_.localizedString(key, "", ""); }

std::string GroupMetrics::localeFormat(std::string_view format, const std::vector<platform::FormatArg>& args) const {
    return platform::localizedStringWithFormat(platform_.localeId(), format, args);
}

float GroupMetrics::getVelmorantConfigValueForKey(std::string_view key) {
    return configValueForKey(key).value_or(-1.0f);
}

std::optional<float> GroupMetrics::configValueForKey(std::string_view key) {
    auto config = storeDictionary(keys::kVelmorantConfig);
    if (!config) return std::nullopt;
    const Value* value = config->objectForKey(key);
    if (!value) return std::nullopt;
    // An unreadable value counts as a missing setting rather than as NaN.
    auto number = numberFor(value);
    if (!number) return std::nullopt;
    return static_cast<float>(*number);
}

bool GroupMetrics::getVelmorantSwitchValueForKey(std::string_view key) {
    auto config = storeDictionary(keys::kVelmorantConfig);
    return config && config->contains(key);
}

long GroupMetrics::hourNow() { return formatTools_ ? formatTools_->currentHour(platform_.now()) : 0; }

long GroupMetrics::configNightHour() {
    float value = getVelmorantConfigValueForKey(keys::kNightHour);
    // Truncation toward zero: -0.5 is hour 0, -1 (missing) is the default.
    long hour = value <= -1.0f ? -1 : static_cast<long>(std::trunc(std::fmin(value, 1e6f)));
    return usableNightHour(hour);
}

long GroupMetrics::bankNightHour(const Dictionary& bank) {
    auto value = numberFor(bank, keys::kNightHour);
    if (!value) return kDefaultNightHour;
    // A present value is taken as it stands, 0 included.
    return usableNightHour(static_cast<long>(Value(*value).integerValue()));
}

Date GroupMetrics::getFromDateForNightHour(long hour) {
    hour = usableNightHour(hour);
    FormatTools& ft = formatTools();
    Date now = platform_.now();
    long h = ft.currentHour(now);
    Date base = hour >= 1 && h < hour ? now.dateByAddingTimeInterval(-86400) : now;
    return ft.dateForDate(base, hour, 0);
}

std::string GroupMetrics::currentDayKey(const Dictionary& bank) {
    Date from = getFromDateForNightHour(bankNightHour(bank));
    return formatTools().YYMMDD(from.dateByAddingTimeInterval(43200));
}

bool GroupMetrics::isCurrentDay(const Value* key, const Dictionary& bank) {
    const std::string* text = key ? key->string() : nullptr;
    return text && *text == currentDayKey(bank);
}

bool GroupMetrics::shouldReportPreviousDay() {
    long n = configNightHour();
    long h = hourNow();
    return n >= 1 && h >= n;
}

bool GroupMetrics::watchDictIsValid() {
    prepare();
    auto track = storeDictionary(keys::kWatchTrackDict);
    if (!track) return false;
    const Value* synch = track->objectForKey(keys::kRawSynchTime);
    auto synchTime = synch ? synch->date() : std::nullopt;
    if (!synchTime) return false;
    Date from = getFromDateForNightHour(configNightHour());
    return synchTime->timeIntervalSinceDate(from) > 60.0;
}

}  // namespace velmorant::metrics
