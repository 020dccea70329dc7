#include "cli/CallRegistry.h"

#include "format/FormatTools.h"

namespace velmorant::cli {
using format::FormatTools;

namespace {

constexpr const char* kClass = "FormatTools";

// An operation of one date. A nil date gives none, as formatting no date gives no text.
template <typename R>
void addDateOperation(CallRegistry& registry, const char* selector, R (FormatTools::*operation)(platform::Date)) {
    registry.add(kClass, selector, {ParamType::Date},
                 [operation](platform::Platform& p, const CallArgs& a) -> CallResult {
                     std::optional<platform::Date> date = a.date(0);
                     if (!date) return {};
                     FormatTools tools(p);
                     return CallResult((tools.*operation)(*date));
                 });
}

// An operation without arguments.
template <typename R>
void addPlainOperation(CallRegistry& registry, const char* selector, R (FormatTools::*operation)()) {
    registry.add(kClass, selector, {}, [operation](platform::Platform& p, const CallArgs&) -> CallResult {
        FormatTools tools(p);
        return CallResult((tools.*operation)());
    });
}

// An operation of a length of time in seconds.
void addDurationOperation(CallRegistry& registry, const char* selector,
                          std::string (FormatTools::*operation)(double)) {
    registry.add(kClass, selector, {ParamType::Number},
                 [operation](platform::Platform& p, const CallArgs& a) -> CallResult {
                     if (a.isNil(0)) return {};
                     FormatTools tools(p);
                     return CallResult((tools.*operation)(a.number(0)));
                 });
}

// An operation of one whole number.
template <typename R>
void addCountOperation(CallRegistry& registry, const char* selector, R (FormatTools::*operation)(long)) {
    registry.add(kClass, selector, {ParamType::Integer},
                 [operation](platform::Platform& p, const CallArgs& a) -> CallResult {
                     if (a.isNil(0)) return {};
                     FormatTools tools(p);
                     return CallResult((tools.*operation)(a.integer(0)));
                 });
}

bool anyNil(const CallArgs& a) {
    for (std::size_t i = 0; i < a.size(); ++i)
        if (a.isNil(i)) return true;
    return false;
}

// Clock times, durations, day keys and display patterns.
void addTimeAndDateTextCalls(CallRegistry& registry) {
    using T = FormatTools;
    using P = ParamType;

    // Clock times.
    addDateOperation(registry, "hourMin:", &T::hourMin);
    addDateOperation(registry, "hrMn24:", &T::hrMn24);
    addDateOperation(registry, "hrMn:", &T::hrMn);
    addDateOperation(registry, "hrMnSec:", &T::hrMnSec);
    addDateOperation(registry, "dayTime:", &T::dayTime);
    addDateOperation(registry, "dayTimeNoSuffix:", &T::dayTimeNoSuffix);
    addDateOperation(registry, "timeAs24:", &T::timeAs24);
    addDateOperation(registry, "HHmm:", &T::HHmm);
    addDateOperation(registry, "currentHour:", &T::currentHour);
    addDateOperation(registry, "currentDay:", &T::currentDay);
    addDateOperation(registry, "currentMin:", &T::currentMin);
    addPlainOperation(registry, "is24hr", &T::is24hr);

    // Durations.
    addDurationOperation(registry, "formattedTimeInterval:", &T::formattedTimeInterval);
    addDurationOperation(registry, "formattedLongTimeInterval:", &T::formattedLongTimeInterval);
    addDurationOperation(registry, "formattedMinInterval:", &T::formattedMinInterval);
    addDurationOperation(registry, "formattedShortTimeInterval:", &T::formattedShortTimeInterval);
    addDurationOperation(registry, "formattedShortHMSInterval:", &T::formattedShortHMSInterval);
    addDurationOperation(registry, "formattedLongMinInterval:", &T::formattedLongMinInterval);
    addDurationOperation(registry, "formattedDaysInterval:", &T::formattedDaysInterval);
    addPlainOperation(registry, "shortTermForMIN", &T::shortTermForMIN);
    addPlainOperation(registry, "shortTermForHRS", &T::shortTermForHRS);
    addPlainOperation(registry, "shortTermForDAYS", &T::shortTermForDAYS);

    // Day keys and machine-readable dates.
    addDateOperation(registry, "YYMMDD:", &T::YYMMDD);
    registry.add(kClass, "NSDateFromYYMMDD:", {P::String}, [](platform::Platform& p, const CallArgs& a) -> CallResult {
        std::optional<std::string> key = a.string(0);
        if (!key) return {};
        FormatTools tools(p);
        return CallResult(tools.NSDateFromYYMMDD(*key));
    });
    addDateOperation(registry, "CSVDate:", &T::CSVDate);
    addDateOperation(registry, "CSVYMD:", &T::CSVYMD);
    addDateOperation(registry, "isoDateFromDate:", &T::isoDateFromDate);
    addPlainOperation(registry, "currentYear", &T::currentYear);

    // Named display patterns.
    addDateOperation(registry, "monthDateYear:", &T::monthDateYear);
    addDateOperation(registry, "shortDate:", &T::shortDate);
    addDateOperation(registry, "shortDay:", &T::shortDay);
    addDateOperation(registry, "shortDayMonth:", &T::shortDayMonth);
    addDateOperation(registry, "shortDayMonthYear:", &T::shortDayMonthYear);
    addDateOperation(registry, "shortDayC:", &T::shortDayC);
    addDateOperation(registry, "shortDayOnly:", &T::shortDayOnly);
    addDateOperation(registry, "veryShortDayOnly:", &T::veryShortDayOnly);
    addDateOperation(registry, "shortMD:", &T::shortMD);
    addDateOperation(registry, "shortMonth:", &T::shortMonth);
    addDateOperation(registry, "longMonth:", &T::longMonth);
    addDateOperation(registry, "dateInMonth:", &T::dateInMonth);
    addDateOperation(registry, "yearOfDate:", &T::yearOfDate);
    addDateOperation(registry, "dayMonthDateTime:", &T::dayMonthDateTime);
    addDateOperation(registry, "dayDateTime:", &T::dayDateTime);

    // Localised patterns.
    addDateOperation(registry, "dayDate:", &T::dayDate);
    addDateOperation(registry, "dayMonthDate:", &T::dayMonthDate);
    addDateOperation(registry, "dayMonthDateYear:", &T::dayMonthDateYear);
    addDateOperation(registry, "shorthhmmDDMMYY:", &T::shorthhmmDDMMYY);
    addDateOperation(registry, "ddmmyy:", &T::ddmmyy);
    addDateOperation(registry, "ddmm:", &T::ddmm);
    addDateOperation(registry, "ddmmm:", &T::ddmmm);
}

// Calendar arithmetic and text.
void addCalendarAndTextCalls(CallRegistry& registry) {
    using T = FormatTools;
    using P = ParamType;
    // Calendar arithmetic.
    addPlainOperation(registry, "getMidnight", &T::getMidnight);
    addDateOperation(registry, "intervalSinceMidnight:", &T::intervalSinceMidnight);
    registry.add(kClass, "dateForDate:withHour:withMin:", {P::Date, P::Integer, P::Integer},
                 [](platform::Platform& p, const CallArgs& a) -> CallResult {
                     if (anyNil(a)) return {};
                     FormatTools tools(p);
                     return CallResult(tools.dateForDate(*a.date(0), a.integer(1), a.integer(2)));
                 });
    registry.add(kClass, "epochIntervalForDate:withHour:withMin:", {P::Date, P::Integer, P::Integer},
                 [](platform::Platform& p, const CallArgs& a) -> CallResult {
                     if (anyNil(a)) return {};
                     FormatTools tools(p);
                     return CallResult(tools.epochIntervalForDate(*a.date(0), a.integer(1), a.integer(2)));
                 });
    registry.add(kClass, "dateForDate:withYear:withMonth:withDay:withHour:withMin:",
                 {P::Date, P::Integer, P::Integer, P::Integer, P::Integer, P::Integer},
                 [](platform::Platform& p, const CallArgs& a) -> CallResult {
                     if (anyNil(a)) return {};
                     FormatTools tools(p);
                     return CallResult(tools.dateForDate(*a.date(0), a.integer(1), a.integer(2), a.integer(3),
                                                         a.integer(4), a.integer(5)));
                 });
    registry.add(kClass, "startDateForDaysAgo:basedOnDate:", {P::Integer, P::Date},
                 [](platform::Platform& p, const CallArgs& a) -> CallResult {
                     if (anyNil(a)) return {};
                     FormatTools tools(p);
                     return CallResult(tools.startDateForDaysAgo(a.integer(0), *a.date(1)));
                 });
    addCountOperation(registry, "startOfMonthMonthsAgo:", &T::startOfMonthMonthsAgo);
    addCountOperation(registry, "nameOfMonthMonthsAgo:", &T::nameOfMonthMonthsAgo);
    addDateOperation(registry, "getWeekdayNoForDate:", &T::getWeekdayNoForDate);
    addDateOperation(registry, "dayNoOfDate:", &T::dayNoOfDate);
    addPlainOperation(registry, "nowDate", &T::nowDate);
    addDateOperation(registry, "seedForDate:", &T::seedForDate);
    addCountOperation(registry, "fromDateForSeed:", &T::fromDateForSeed);
    addDateOperation(registry, "isDaylightSavings:", &T::isDaylightSavings);
    registry.add(kClass, "getDaylightSavingsHourForDate:withMode:", {P::Date, P::Integer},
                 [](platform::Platform& p, const CallArgs& a) -> CallResult {
                     if (anyNil(a)) return {};
                     FormatTools tools(p);
                     return CallResult(tools.getDaylightSavingsHourForDate(*a.date(0), a.integer(1)));
                 });

    // Text.
    addDateOperation(registry, "whenString:", &T::whenString);
    registry.add(kClass, "whenStringFB:", {P::String}, [](platform::Platform& p, const CallArgs& a) -> CallResult {
        std::optional<std::string> text = a.string(0);
        if (!text) return {};
        FormatTools tools(p);
        return CallResult(tools.whenStringFB(*text));
    });
    // A nil string has no length, so it reads as the empty string.
    registry.add(kClass, "sentenceCapitalizedString:", {P::String},
                 [](platform::Platform& p, const CallArgs& a) -> CallResult {
                     FormatTools tools(p);
                     return CallResult(tools.sentenceCapitalizedString(a.string(0).value_or("")));
                 });
}

}  // namespace

void registerFormatToolsCalls(CallRegistry& registry) {
    addTimeAndDateTextCalls(registry);
    addCalendarAndTextCalls(registry);
}

}  // namespace velmorant::cli
