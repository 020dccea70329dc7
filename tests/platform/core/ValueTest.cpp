#include "platform/core/Value.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <type_traits>

using namespace velmorant::platform;

namespace {

// Texts build values; other pointers must not compile (they used to turn into `true`).
static_assert(std::is_constructible_v<Value, const char*>);
static_assert(std::is_constructible_v<Value, char*>);
static_assert(std::is_constructible_v<Value, const char (&)[3]>);
static_assert(!std::is_constructible_v<Value, const std::string*>);
static_assert(!std::is_constructible_v<Value, std::string*>);
static_assert(!std::is_constructible_v<Value, const Value*>);
static_assert(!std::is_constructible_v<Value, const Dictionary*>);
static_assert(!std::is_constructible_v<Value, const int*>);
static_assert(!std::is_constructible_v<Value, std::nullptr_t>);
static_assert(!std::is_convertible_v<const std::string*, Value>);

struct Reading {
    const char* name;
    Value value;
    double asDouble;
    long long asInteger;
    bool asBool;
};

TEST(Value, ReadsNumbersAndStringsTheFoundationWay) {
    const double inf = std::numeric_limits<double>::infinity();
    const Reading cases[] = {
        {"integer", Value(42), 42, 42, true},
        {"negative real truncates", Value(-3.9), -3.9, -3, true},
        {"zero", Value(0.0), 0, 0, false},
        {"true", Value(true), 1, 1, true},
        {"plain string", Value("12.5"), 12.5, 12, true},
        {"leading blanks and junk", Value("  7.25 hours"), 7.25, 7, true},
        {"exponent", Value("-3e2"), -300, -3, true},
        {"no digits", Value("abc"), 0, 0, false},
        {"dot alone", Value("."), 0, 0, false},
        {"yes word", Value("YES"), 0, 0, true},
        {"zeros then digit", Value("007"), 7, 7, true},
        {"huge exponent", Value("1e999"), inf, 1, true},
        {"tiny exponent", Value("1e-999"), 0, 1, true},
        {"integer overflow saturates", Value("99999999999999999999"), 1e20, std::numeric_limits<long long>::max(), true},
        {"infinity saturates", Value(inf), inf, std::numeric_limits<long long>::max(), true},
        {"dictionary is zero", Value(Dictionary{{"a", 1}}), 0, 0, false},
        {"date is zero", Value(Date::fromUnix(100)), 0, 0, false},
        {"none is zero", Value(), 0, 0, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        if (std::isinf(c.asDouble)) EXPECT_EQ(c.value.doubleValue(), c.asDouble);
        else EXPECT_DOUBLE_EQ(c.value.doubleValue(), c.asDouble);
        EXPECT_EQ(c.value.integerValue(), c.asInteger);
        EXPECT_EQ(c.value.boolValue(), c.asBool);
    }
}

TEST(Value, NanNeverBecomesUndefinedInteger) {
    Value nan(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(nan.integerValue(), 0);
    EXPECT_EQ(nan.intValue(), 0);
    EXPECT_TRUE(std::isnan(nan.floatValue()));
}

TEST(Value, WrongKindsReadAsAbsent) {
    Value text("20240302");
    EXPECT_EQ(text.dictionary(), nullptr);
    EXPECT_FALSE(text.date());
    EXPECT_EQ(Value(5).string(), nullptr);
    EXPECT_FALSE(Value(Dictionary{}).colour());
}

// A widget operation with no data hands back no image; the value it makes must
// be none, never an image kind that readers then dereference.
TEST(Value, MissingImageIsNone) {
    Value missing{ImagePtr{}};
    EXPECT_TRUE(missing.isNone());
    EXPECT_EQ(missing.image(), nullptr);
    Dictionary record{{"ringsImage", ImagePtr{}}};
    EXPECT_FALSE(record.contains("ringsImage"));
}

TEST(Value, RemembersSinglePrecision) {
    EXPECT_TRUE(Value(0.1f).isSinglePrecision());
    EXPECT_FALSE(Value(0.1).isSinglePrecision());
    EXPECT_EQ(Value(0.1f).doubleValue(), static_cast<double>(0.1f));
}

TEST(Dictionary, SettingNoneRemovesTheKey) {
    Dictionary d{{"a", 1}, {"b", "x"}};
    d.setObject(Value(), "a");
    EXPECT_FALSE(d.contains("a"));
    d.setObject(2, "b");
    EXPECT_EQ(d.objectForKey("b")->integerValue(), 2);
    EXPECT_EQ(d.size(), 1u);
}

}  // namespace
