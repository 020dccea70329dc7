#include "Arguments.h"

#include "IsoDate.h"
#include "platform/graphics/Canvas.h"

#include <nlohmann/json.hpp>

#include <charconv>
#include <cmath>
#include <sstream>

namespace velmorant::cli {
namespace {

using json = nlohmann::json;

platform::Value fromJson(const json& j, const platform::Platform& platform, const std::string& where) {
    switch (j.type()) {
        case json::value_t::null: return {};
        case json::value_t::boolean: return j.get<bool>();
        case json::value_t::number_integer: return j.get<long long>();
        case json::value_t::number_unsigned: return static_cast<long long>(j.get<unsigned long long>());
        case json::value_t::number_float: return j.get<double>();
        case json::value_t::string: return j.get<std::string>();
        case json::value_t::array: {
            platform::Array a;
            for (const auto& item : j) a.push_back(fromJson(item, platform, where));
            return a;
        }
        case json::value_t::object: {
            if (j.size() == 1 && j.contains("date") && j["date"].is_string()) {
                auto date = parseIsoDate(j["date"].get<std::string>(), platform.timeZone());
                if (!date) throw UsageError(where + ": " + j["date"].dump() + " is not an ISO 8601 date");
                return *date;
            }
            platform::Dictionary d;
            for (const auto& [key, item] : j.items()) d.setObject(fromJson(item, platform, where), key);
            return d;
        }
        default: return {};
    }
}

platform::Value readOne(ParamType type, const std::string& text, const platform::Platform& platform,
                        const std::string& where) {
    if (text == "nil") return {};
    auto wrong = [&]() -> UsageError {
        return UsageError(where + " must be a " + std::string(paramTypeName(type)) + ", not \"" + text + "\"");
    };
    switch (type) {
        case ParamType::Number: {
            double v = 0;
            auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), v);
            if (ec != std::errc() || end != text.data() + text.size() || text.empty()) throw wrong();
            return v;
        }
        case ParamType::Integer: {
            long long v = 0;
            auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), v);
            if (ec != std::errc() || end != text.data() + text.size() || text.empty()) throw wrong();
            return v;
        }
        case ParamType::Bool:
            if (text == "true" || text == "YES") return true;
            if (text == "false" || text == "NO") return false;
            throw wrong();
        case ParamType::String: return text;
        case ParamType::Date: {
            auto date = parseIsoDate(text, platform.timeZone());
            if (!date) throw wrong();
            return *date;
        }
        case ParamType::Dictionary: {
            json j = json::parse(text, nullptr, false);
            if (j.is_discarded() || !j.is_object()) throw wrong();
            return fromJson(j, platform, where);
        }
    }
    throw wrong();
}

}  // namespace

CallArgs readArguments(const Operation& operation, const std::vector<std::string>& args,
                       const platform::Platform& platform) {
    std::string name = operation.className + "." + operation.selector;
    if (args.size() != operation.params.size()) {
        throw UsageError(name + " takes " + std::to_string(operation.params.size()) + " argument" +
                         (operation.params.size() == 1 ? "" : "s") + ", not " + std::to_string(args.size()));
    }
    std::vector<platform::Value> values;
    for (std::size_t i = 0; i < args.size(); ++i)
        values.push_back(readOne(operation.params[i], args[i], platform,
                                 "argument " + std::to_string(i + 1) + " of " + name));
    return CallArgs(std::move(values));
}

namespace {

std::string shortNumber(double v) {
    std::ostringstream text;
    text << v;
    return text.str();
}

double numberWithin(const std::string& option, const std::string& text, double min, double max, const char* unit) {
    double v = 0;
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), v);
    if (ec != std::errc() || end != text.data() + text.size() || !(v >= min && v <= max))
        throw UsageError(option + " must be a number from " + shortNumber(min) + " to " + shortNumber(max) + " (" +
                         unit + "), not \"" + text + "\"");
    return v;
}

}  // namespace

double readWidth(const std::string& text) {
    return numberWithin("--width", text, PictureBounds::kMinWidth, PictureBounds::kMaxWidth, "points");
}

double readScale(const std::string& text) {
    return numberWithin("--scale", text, PictureBounds::kMinScale, PictureBounds::kMaxScale, "pixels per point");
}

void checkPictureSize(double width, double scale) {
    constexpr int kMax = platform::Canvas::kMaxPixels;
    const double pixels = std::ceil(width * scale);
    if (pixels > kMax)
        throw UsageError("--width " + shortNumber(width) + " at --scale " + shortNumber(scale) + " makes a card " +
                         shortNumber(pixels) + " pixels wide; a picture can be at most " + std::to_string(kMax) +
                         " pixels wide (width x scale), so lower --width or --scale");
}

}  // namespace velmorant::cli
