#include "platform/core/Value.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace velmorant::platform {
namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::string_view skipBlanks(std::string_view text) {
    std::size_t i = 0;
    while (i < text.size() && isBlank(text[i])) ++i;
    return text.substr(i);
}

// The phone's CPU converts out-of-range doubles by saturating and NaN to 0;
// doing the same here keeps damaged values from being undefined behaviour.
template <typename Int>
Int saturatingCast(double v) {
    if (std::isnan(v)) return 0;
    if (v >= static_cast<double>(std::numeric_limits<Int>::max())) return std::numeric_limits<Int>::max();
    if (v <= static_cast<double>(std::numeric_limits<Int>::min())) return std::numeric_limits<Int>::min();
    return static_cast<Int>(v);
}

}  // namespace

double leadingDouble(std::string_view text) {
    text = skipBlanks(text);
    std::size_t i = 0;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
    std::size_t digits = 0;
    while (i < text.size() && isDigit(text[i])) ++i, ++digits;
    if (i < text.size() && text[i] == '.') {
        ++i;
        while (i < text.size() && isDigit(text[i])) ++i, ++digits;
    }
    if (digits == 0) return 0.0;
    if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
        std::size_t j = i + 1;
        if (j < text.size() && (text[j] == '+' || text[j] == '-')) ++j;
        if (j < text.size() && isDigit(text[j])) {
            while (j < text.size() && isDigit(text[j])) ++j;
            i = j;
        }
    }
    std::string_view number = text.substr(0, i);
    bool negative = number.front() == '-';
    if (number.front() == '+' || negative) number.remove_prefix(1);
    double value = 0.0;
    auto [ptr, ec] = std::from_chars(number.data(), number.data() + number.size(), value);
    if (ec == std::errc::result_out_of_range) {
        // Too large reads as infinity, too small as zero, as strtod does.
        bool tiny = number.find_first_of("eE") != std::string_view::npos &&
                    number[number.find_first_of("eE") + 1] == '-';
        value = tiny ? 0.0 : std::numeric_limits<double>::infinity();
    }
    return negative ? -value : value;
}

std::int64_t leadingInteger(std::string_view text) {
    text = skipBlanks(text);
    std::size_t i = 0;
    bool negative = false;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) negative = text[i++] == '-';
    std::int64_t value = 0;
    constexpr auto max = std::numeric_limits<std::int64_t>::max();
    for (; i < text.size() && isDigit(text[i]); ++i) {
        int d = text[i] - '0';
        if (value > (max - d) / 10) return negative ? std::numeric_limits<std::int64_t>::min() : max;
        value = value * 10 + d;
    }
    return negative ? -value : value;
}

bool leadingBool(std::string_view text) {
    text = skipBlanks(text);
    std::size_t i = 0;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
    while (i < text.size() && text[i] == '0') ++i;
    if (i >= text.size()) return false;
    char c = text[i];
    return c == 'Y' || c == 'y' || c == 'T' || c == 't' || (c >= '1' && c <= '9');
}

Dictionary::Dictionary(std::initializer_list<Map::value_type> entries) {
    for (const auto& [key, value] : entries) setObject(value, key);
}

const Value* Dictionary::objectForKey(std::string_view key) const {
    auto it = entries_.find(key);
    return it == entries_.end() ? nullptr : &it->second;
}

void Dictionary::setObject(Value value, std::string_view key) {
    if (value.isNone()) {
        removeObjectForKey(key);
        return;
    }
    auto it = entries_.find(key);
    if (it != entries_.end()) it->second = std::move(value);
    else entries_.emplace(std::string(key), std::move(value));
}

void Dictionary::removeObjectForKey(std::string_view key) {
    auto it = entries_.find(key);
    if (it != entries_.end()) entries_.erase(it);
}

bool Dictionary::operator==(const Dictionary& other) const { return entries_ == other.entries_; }

Value::Kind Value::kind() const {
    static constexpr Kind kinds[] = {Kind::None,  Kind::Boolean, Kind::Integer,    Kind::Real,
                                     Kind::String, Kind::Date,   Kind::Data,       Kind::Array,
                                     Kind::Dictionary, Kind::Colour, Kind::Image};
    return kinds[v_.index()];
}

bool Value::isSinglePrecision() const {
    auto* real = std::get_if<Real>(&v_);
    return real && real->single;
}

double Value::doubleValue() const {
    if (auto* b = std::get_if<bool>(&v_)) return *b ? 1.0 : 0.0;
    if (auto* i = std::get_if<std::int64_t>(&v_)) return static_cast<double>(*i);
    if (auto* r = std::get_if<Real>(&v_)) return r->value;
    if (auto* s = std::get_if<std::string>(&v_)) return leadingDouble(*s);
    return 0.0;
}

float Value::floatValue() const { return static_cast<float>(doubleValue()); }

std::int64_t Value::integerValue() const {
    if (auto* b = std::get_if<bool>(&v_)) return *b ? 1 : 0;
    if (auto* i = std::get_if<std::int64_t>(&v_)) return *i;
    if (auto* r = std::get_if<Real>(&v_)) return saturatingCast<std::int64_t>(r->value);
    if (auto* s = std::get_if<std::string>(&v_)) return leadingInteger(*s);
    return 0;
}

int Value::intValue() const {
    if (auto* s = std::get_if<std::string>(&v_)) {
        std::int64_t v = leadingInteger(*s);
        return static_cast<int>(std::clamp<std::int64_t>(v, std::numeric_limits<int>::min(),
                                                          std::numeric_limits<int>::max()));
    }
    if (auto* r = std::get_if<Real>(&v_)) return saturatingCast<int>(r->value);
    return static_cast<int>(integerValue());
}

bool Value::boolValue() const {
    if (auto* b = std::get_if<bool>(&v_)) return *b;
    if (auto* i = std::get_if<std::int64_t>(&v_)) return *i != 0;
    if (auto* r = std::get_if<Real>(&v_)) return r->value != 0.0;
    if (auto* s = std::get_if<std::string>(&v_)) return leadingBool(*s);
    return false;
}

const std::string* Value::string() const { return std::get_if<std::string>(&v_); }
const Dictionary* Value::dictionary() const { return std::get_if<Dictionary>(&v_); }
const Array* Value::array() const { return std::get_if<Array>(&v_); }
const Data* Value::data() const { return std::get_if<Data>(&v_); }

std::optional<Date> Value::date() const {
    if (auto* d = std::get_if<Date>(&v_)) return *d;
    return std::nullopt;
}

std::optional<Colour> Value::colour() const {
    if (auto* c = std::get_if<Colour>(&v_)) return *c;
    return std::nullopt;
}

ImagePtr Value::image() const {
    if (auto* i = std::get_if<ImagePtr>(&v_)) return *i;
    return nullptr;
}

bool Value::operator==(const Value& other) const { return v_ == other.v_; }

}  // namespace velmorant::platform
