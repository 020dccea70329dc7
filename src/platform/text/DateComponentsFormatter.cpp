#include "platform/text/DateComponentsFormatter.h"

#include "platform/text/detail/IcuHandles.h"
#include "platform/text/detail/IcuStrings.h"

#include <unicode/dcfmtsym.h>
#include <unicode/measfmt.h>
#include <unicode/measure.h>
#include <unicode/measunit.h>
#include <unicode/numfmt.h>

#include <cmath>
#include <cstdint>
#include <map>
#include <vector>

namespace velmorant::platform {
namespace {

using Formatter = DateComponentsFormatter;

struct UnitInfo {
    unsigned bit;
    std::int64_t seconds;
    icu::MeasureUnit (*measureUnit)();
};

// Largest first; folding and splitting walk this order.
const UnitInfo kUnits[] = {
    {Formatter::WeekOfMonth, 604800, &icu::MeasureUnit::getWeek},
    {Formatter::Day, 86400, &icu::MeasureUnit::getDay},
    {Formatter::Hour, 3600, &icu::MeasureUnit::getHour},
    {Formatter::Minute, 60, &icu::MeasureUnit::getMinute},
    {Formatter::Second, 1, &icu::MeasureUnit::getSecond},
};
constexpr unsigned kAllUnits = Formatter::WeekOfMonth | Formatter::Day | Formatter::Hour | Formatter::Minute |
                               Formatter::Second;
// Past this a double no longer holds every whole second.
constexpr double kLargestInterval = 9.0e15;

struct Part {
    std::size_t unit;  // index into kUnits
    std::int64_t value;
};

// The units shown once zero-valued ones are dropped as the behaviour asks.
std::vector<Part> visibleParts(const std::vector<Part>& parts, unsigned drop) {
    std::ptrdiff_t first = -1, last = -1;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (parts[i].value == 0) continue;
        if (first < 0) first = static_cast<std::ptrdiff_t>(i);
        last = static_cast<std::ptrdiff_t>(i);
    }
    std::vector<Part> shown;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const auto index = static_cast<std::ptrdiff_t>(i);
        if (parts[i].value == 0) {
            const bool leading = first < 0 || index < first;
            const bool trailing = first < 0 || index > last;
            const bool middle = !leading && !trailing;
            if ((leading && (drop & Formatter::DropLeading)) || (trailing && (drop & Formatter::DropTrailing)) ||
                (middle && (drop & Formatter::DropMiddle)))
                continue;
        }
        shown.push_back(parts[i]);
    }
    if (shown.empty()) shown.push_back(parts.back());
    return shown;
}

// Hours, minutes and seconds next to each other: what a clock-like text can show.
bool isClockRun(const std::vector<Part>& parts) {
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const unsigned bit = kUnits[parts[i].unit].bit;
        if (bit != Formatter::Hour && bit != Formatter::Minute && bit != Formatter::Second) return false;
        if (i > 0 && parts[i].unit != parts[i - 1].unit + 1) return false;
    }
    return true;
}

}  // namespace

struct DateComponentsFormatter::Impl {
    explicit Impl(const icu::Locale& locale) : locale(locale) {}

    icu::MeasureFormat* measureFormat(UMeasureFormatWidth width) {
        auto& format = measureFormats[width];
        if (!format) {
            UErrorCode status = U_ZERO_ERROR;
            format = std::make_unique<icu::MeasureFormat>(locale, width, status);
            if (U_FAILURE(status)) format.reset();
        }
        return format.get();
    }

    icu::NumberFormat* numberFormat() {
        if (!number) {
            UErrorCode status = U_ZERO_ERROR;
            number.reset(icu::NumberFormat::createInstance(locale, status));
            if (U_FAILURE(status)) number.reset();
        }
        return number.get();
    }

    const icu::Locale locale;
    std::map<UMeasureFormatWidth, std::unique_ptr<icu::MeasureFormat>> measureFormats;
    std::unique_ptr<icu::NumberFormat> number;
};

DateComponentsFormatter::DateComponentsFormatter(const Locale& locale)
    : locale_(locale), impl_(std::make_unique<Impl>(icuLocale(locale))) {}

DateComponentsFormatter::~DateComponentsFormatter() = default;

std::optional<std::string> DateComponentsFormatter::stringFromTimeInterval(double seconds) {
    if (!std::isfinite(seconds) || std::fabs(seconds) >= kLargestInterval) return std::nullopt;

    const unsigned allowed = (allowedUnits_ & kAllUnits) ? (allowedUnits_ & kAllUnits) : kAllUnits;
    std::vector<Part> parts;
    auto rest = static_cast<std::int64_t>(std::fabs(seconds));
    for (std::size_t i = 0; i < std::size(kUnits); ++i) {
        if (!(allowed & kUnits[i].bit)) continue;
        parts.push_back({i, rest / kUnits[i].seconds});
        rest %= kUnits[i].seconds;
    }

    const bool positional = unitsStyle_ == UnitsStyle::Positional;
    unsigned drop = 0;
    if (!(zeroFormattingBehavior_ & Pad)) {
        drop = zeroFormattingBehavior_ & DropAll;
        if (zeroFormattingBehavior_ & ZeroDefault) drop |= positional ? DropLeading : DropAll;
    }
    std::vector<Part> shown = visibleParts(parts, drop);
    if (maximumUnitCount_ > 0 && shown.size() > static_cast<std::size_t>(maximumUnitCount_))
        shown.resize(static_cast<std::size_t>(maximumUnitCount_));

    bool negative = false;
    if (seconds < 0)
        for (const Part& part : shown) negative = negative || part.value != 0;

    UErrorCode status = U_ZERO_ERROR;
    icu::UnicodeString text;
    if (positional && (shown.size() == 1 || isClockRun(shown))) {
        if (shown.size() == 1) {
            icu::NumberFormat* format = impl_->numberFormat();
            if (!format) return std::nullopt;
            format->format(static_cast<int64_t>(shown.front().value), text);
        } else {
            icu::MeasureFormat* format = impl_->measureFormat(UMEASFMT_WIDTH_NUMERIC);
            if (!format) return std::nullopt;
            std::vector<icu::Measure> measures;
            for (const Part& part : shown)
                measures.emplace_back(icu::Formattable(static_cast<int64_t>(part.value)),
                                      kUnits[part.unit].measureUnit().clone(), status);
            icu::FieldPosition position;
            format->formatMeasures(measures.data(), static_cast<int32_t>(measures.size()), text, position, status);
        }
        if (negative) {
            icu::DecimalFormatSymbols symbols(impl_->locale, status);
            text.insert(0, symbols.getConstSymbol(icu::DecimalFormatSymbols::kMinusSignSymbol));
        }
    } else {
        UMeasureFormatWidth width = UMEASFMT_WIDTH_NARROW;
        if (unitsStyle_ == UnitsStyle::Full) width = UMEASFMT_WIDTH_WIDE;
        else if (unitsStyle_ == UnitsStyle::Short) width = UMEASFMT_WIDTH_SHORT;
        icu::MeasureFormat* format = impl_->measureFormat(width);
        if (!format) return std::nullopt;
        std::vector<icu::Measure> measures;
        for (std::size_t i = 0; i < shown.size(); ++i) {
            // The sign goes on the first unit only; -0 keeps it when that unit is zero.
            icu::Formattable amount = (i == 0 && negative)
                                          ? icu::Formattable(-static_cast<double>(shown[i].value))
                                          : icu::Formattable(static_cast<int64_t>(shown[i].value));
            measures.emplace_back(amount, kUnits[shown[i].unit].measureUnit().clone(), status);
        }
        icu::FieldPosition position;
        format->formatMeasures(measures.data(), static_cast<int32_t>(measures.size()), text, position, status);
    }
    if (U_FAILURE(status)) return std::nullopt;
    return toUtf8(text);
}

}  // namespace velmorant::platform
