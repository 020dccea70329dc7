#pragma once

#include "platform/services/Platform.h"
#include "platform/core/Value.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmorant::cli {

// How a command-line argument of `call` is read.
enum class ParamType {
    Number,      // any number ("27000", "0.9999", "-1")
    Integer,     // a whole number
    Bool,        // true / false
    String,      // the text as given
    Date,        // ISO 8601; without an offset it is local time in the zone in force
    Dictionary,  // a JSON object; {"date":"..."} inside it is a date
};

std::string_view paramTypeName(ParamType type);

// The arguments of one call, already read as their parameters' types.
// "nil" reads as none for every type.
class CallArgs {
public:
    explicit CallArgs(std::vector<platform::Value> values) : values_(std::move(values)) {}

    std::size_t size() const { return values_.size(); }
    const platform::Value& at(std::size_t i) const { return values_.at(i); }
    bool isNil(std::size_t i) const { return values_.at(i).isNone(); }

    double number(std::size_t i) const { return values_.at(i).doubleValue(); }
    float floatNumber(std::size_t i) const { return values_.at(i).floatValue(); }
    long integer(std::size_t i) const { return static_cast<long>(values_.at(i).integerValue()); }
    bool boolean(std::size_t i) const { return values_.at(i).boolValue(); }
    [[nodiscard]] std::optional<std::string> string(std::size_t i) const;
    std::optional<platform::Date> date(std::size_t i) const { return values_.at(i).date(); }
    [[nodiscard]] std::optional<platform::Dictionary> dictionary(std::size_t i) const;

private:
    std::vector<platform::Value> values_;
};

// The result of a call, printed as one JSON value.
using CallResult = platform::Value;
using Invoker = std::function<CallResult(platform::Platform&, const CallArgs&)>;

struct Operation {
    std::string className;
    std::string selector;  // as the phone names it, e.g. "dateForDate:withHour:withMin:"
    std::vector<ParamType> params;
    Invoker invoke;
};

// The public operations that `velmorant-snippet call` can reach, by class and selector.
class CallRegistry {
public:
    void add(std::string className, std::string selector, std::vector<ParamType> params, Invoker invoke);

    bool hasClass(std::string_view className) const;
    // Finds "Class.selector"; the trailing colon may be left out, and a
    // selector's first part alone is enough when only one operation has it.
    const Operation* find(std::string_view className, std::string_view selector) const;
    // The operations a selector's first part names, sorted; more than one
    // means the name is ambiguous and find() gives none.
    std::vector<const Operation*> candidates(std::string_view className, std::string_view selector) const;
    std::vector<const Operation*> operationsOf(std::string_view className) const;
    std::vector<std::string> classNames() const;

private:
    std::multimap<std::string, Operation, std::less<>> operations_;
};

// Every operation `call` can reach; tests sweep them all from here, so an
// operation added later is swept too.
CallRegistry makeCallRegistry();

// Each subsystem registers its operations in its own file under calls/.
void registerFormatToolsCalls(CallRegistry& registry);
void registerPalletCalls(CallRegistry& registry);
void registerGroupMetricsCalls(CallRegistry& registry);
void registerSleepMetricsUICalls(CallRegistry& registry);
void registerHandleLightsOffCalls(CallRegistry& registry);
void registerWatchMetricsCalls(CallRegistry& registry);

}  // namespace velmorant::cli
