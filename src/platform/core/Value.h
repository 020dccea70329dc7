#pragma once

#include "platform/core/Colour.h"
#include "platform/core/Date.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace velmorant::platform {

class Image;
class Value;

// A string-keyed map of values: a property-list dictionary, and also the
// metric record that requests build.
class Dictionary {
public:
    using Map = std::map<std::string, Value, std::less<>>;

    Dictionary() = default;
    Dictionary(std::initializer_list<Map::value_type> entries);

    // nullptr when absent.
    const Value* objectForKey(std::string_view key) const;
    bool contains(std::string_view key) const { return objectForKey(key) != nullptr; }
    // Setting a none value removes the key, as setting nil does on the phone.
    void setObject(Value value, std::string_view key);
    void removeObjectForKey(std::string_view key);

    bool empty() const { return entries_.empty(); }
    std::size_t size() const { return entries_.size(); }
    Map::const_iterator begin() const { return entries_.begin(); }
    Map::const_iterator end() const { return entries_.end(); }

    bool operator==(const Dictionary&) const;

private:
    Map entries_;
};

using Array = std::vector<Value>;
using Data = std::vector<std::uint8_t>;
using ImagePtr = std::shared_ptr<const Image>;

// One property-list value (or a record value: colour, image). Readers use the
// Foundation-like accessors, which never fail: a value of another kind reads as
// 0, false or absent, so a damaged store can never crash a reader.
class Value {
public:
    enum class Kind { None, Boolean, Integer, Real, String, Date, Data, Array, Dictionary, Colour, Image };

    Value() = default;
    Value(std::nullopt_t) {}
    Value(bool b) : v_(b) {}
    Value(int i) : v_(std::int64_t{i}) {}
    Value(long i) : v_(std::int64_t{i}) {}
    Value(long long i) : v_(std::int64_t{i}) {}
    // A single-precision number stays marked as one, so it prints as the float it is.
    Value(float f) : v_(Real{f, true}) {}
    Value(double d) : v_(Real{d, false}) {}
    Value(const char* s) : v_(std::string(s)) {}
    // Any other pointer would quietly become a boolean; dereference it instead.
    template <typename T>
    Value(const T*) = delete;
    Value(std::nullptr_t) = delete;
    Value(std::string s) : v_(std::move(s)) {}
    Value(std::string_view s) : v_(std::string(s)) {}
    Value(platform::Date d) : v_(d) {}
    Value(platform::Data d) : v_(std::move(d)) {}
    Value(Array a) : v_(std::move(a)) {}
    Value(platform::Dictionary d) : v_(std::move(d)) {}
    Value(platform::Colour c) : v_(c) {}
    // A missing image is no value at all: a value of kind Image always holds one.
    Value(ImagePtr image) {
        if (image) v_ = std::move(image);
    }
    template <typename T>
    Value(std::optional<T> maybe) {
        if (maybe) *this = Value(std::move(*maybe));
    }

    Kind kind() const;
    bool isNone() const { return kind() == Kind::None; }
    bool isNumber() const { return kind() == Kind::Integer || kind() == Kind::Real || kind() == Kind::Boolean; }
    // True for a real number that was made from a float.
    bool isSinglePrecision() const;

    // Foundation number and string readings: a number converts, a string reads
    // its leading number (else 0), anything else is 0 / false.
    double doubleValue() const;
    float floatValue() const;
    std::int64_t integerValue() const;
    int intValue() const;
    bool boolValue() const;

    // Typed views: nullptr / none when the value is of another kind.
    const std::string* string() const;
    const platform::Dictionary* dictionary() const;
    const Array* array() const;
    const platform::Data* data() const;
    [[nodiscard]] std::optional<platform::Date> date() const;
    [[nodiscard]] std::optional<platform::Colour> colour() const;
    ImagePtr image() const;

    bool operator==(const Value&) const;

private:
    struct Real {
        double value;
        bool single;
        bool operator==(const Real&) const = default;
    };
    std::variant<std::monostate, bool, std::int64_t, Real, std::string, platform::Date, platform::Data, Array,
                 platform::Dictionary, platform::Colour, ImagePtr>
        v_;
};

// Foundation's reading of a string as a number: optional blanks and sign,
// digits with an optional fraction and exponent; anything else gives 0.
double leadingDouble(std::string_view text);
std::int64_t leadingInteger(std::string_view text);
[[nodiscard]] bool leadingBool(std::string_view text);

}  // namespace velmorant::platform
