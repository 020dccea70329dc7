#include "CallRegistry.h"

#include <algorithm>

namespace velmorant::cli {
namespace {

std::string_view withoutTrailingColon(std::string_view s) {
    return !s.empty() && s.back() == ':' ? s.substr(0, s.size() - 1) : s;
}

std::string_view firstPart(std::string_view selector) { return selector.substr(0, selector.find(':')); }

}  // namespace

std::string_view paramTypeName(ParamType type) {
    switch (type) {
        case ParamType::Number: return "number";
        case ParamType::Integer: return "whole number";
        case ParamType::Bool: return "true or false";
        case ParamType::String: return "string";
        case ParamType::Date: return "ISO 8601 date";
        case ParamType::Dictionary: return "JSON object";
    }
    return "value";
}

std::optional<std::string> CallArgs::string(std::size_t i) const {
    if (const std::string* s = values_.at(i).string()) return *s;
    return std::nullopt;
}

std::optional<platform::Dictionary> CallArgs::dictionary(std::size_t i) const {
    if (const platform::Dictionary* d = values_.at(i).dictionary()) return *d;
    return std::nullopt;
}

void CallRegistry::add(std::string className, std::string selector, std::vector<ParamType> params, Invoker invoke) {
    std::string key = className;
    operations_.emplace(std::move(key),
                        Operation{std::move(className), std::move(selector), std::move(params), std::move(invoke)});
}

bool CallRegistry::hasClass(std::string_view className) const { return operations_.contains(className); }

const Operation* CallRegistry::find(std::string_view className, std::string_view selector) const {
    auto [begin, end] = operations_.equal_range(className);
    std::string_view wanted = withoutTrailingColon(selector);
    for (auto it = begin; it != end; ++it)
        if (withoutTrailingColon(it->second.selector) == wanted) return &it->second;
    // The C++ name (the selector's first part) is enough when it is unambiguous.
    auto named = candidates(className, selector);
    return named.size() == 1 ? named.front() : nullptr;
}

std::vector<const Operation*> CallRegistry::candidates(std::string_view className, std::string_view selector) const {
    std::vector<const Operation*> out;
    std::string_view wanted = withoutTrailingColon(selector);
    for (const Operation* op : operationsOf(className))
        if (firstPart(op->selector) == wanted) out.push_back(op);
    return out;
}

std::vector<const Operation*> CallRegistry::operationsOf(std::string_view className) const {
    std::vector<const Operation*> out;
    auto [begin, end] = operations_.equal_range(className);
    for (auto it = begin; it != end; ++it) out.push_back(&it->second);
    std::sort(out.begin(), out.end(), [](auto* a, auto* b) { return a->selector < b->selector; });
    return out;
}

std::vector<std::string> CallRegistry::classNames() const {
    std::vector<std::string> names;
    for (const auto& [name, op] : operations_)
        if (names.empty() || names.back() != name) names.push_back(name);
    return names;
}

CallRegistry makeCallRegistry() {
    CallRegistry registry;
    registerFormatToolsCalls(registry);
    registerPalletCalls(registry);
    registerGroupMetricsCalls(registry);
    registerSleepMetricsUICalls(registry);
    registerHandleLightsOffCalls(registry);
    registerWatchMetricsCalls(registry);
    return registry;
}

}  // namespace velmorant::cli
