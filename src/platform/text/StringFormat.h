#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace velmorant::platform {

// One argument of a printf-style format with the phone's "%@" for objects.
class FormatArg {
public:
    FormatArg(std::nullopt_t) {}  // a missing object: "%@" prints "(null)"
    FormatArg(const char* s) : v_(std::string(s)) {}
    FormatArg(std::string s) : v_(std::move(s)) {}
    FormatArg(std::string_view s) : v_(std::string(s)) {}
    FormatArg(const std::optional<std::string>& s) {
        if (s) v_ = *s;
    }
    FormatArg(int i) : v_(std::int64_t{i}) {}
    FormatArg(long i) : v_(std::int64_t{i}) {}
    FormatArg(long long i) : v_(std::int64_t{i}) {}
    // A float is widened as variadic arguments are.
    FormatArg(float f) : v_(static_cast<double>(f)) {}
    FormatArg(double d) : v_(d) {}

    const std::variant<std::monostate, std::string, std::int64_t, double>& value() const { return v_; }

private:
    std::variant<std::monostate, std::string, std::int64_t, double> v_;
};

// The phone's stringWithFormat: plain C formatting ("1234.5").
std::string stringWithFormat(std::string_view format, const std::vector<FormatArg>& args);

// The phone's localizedStringWithFormat: numbers go through the locale's
// decimal formatter: its decimal mark, grouping ("1,234.5" / "1.234,5") and
// half-even rounding.
std::string localizedStringWithFormat(std::string_view localeId, std::string_view format,
                                      const std::vector<FormatArg>& args);

}  // namespace velmorant::platform
