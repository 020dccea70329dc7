#include "detail/ValueJson.h"

#include "platform/graphics/Image.h"

#include <charconv>
#include <cmath>
#include <ctime>

namespace velmorant::cli {
using json = nlohmann::json;

json number(double value, bool single) {
    if (!std::isfinite(value)) return nullptr;
    // A whole number's shortest text has no fraction: print it as an integer.
    if (value == std::trunc(value) && std::fabs(value) < 1e15) return static_cast<long long>(value);
    if (!single) return value;
    // The double nearest the float's shortest text prints as that text.
    char buffer[32];
    auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, static_cast<float>(value));
    double shortest = 0;
    std::from_chars(buffer, end, shortest);
    return shortest;
}

namespace {

json imageJson(const platform::Image& image, const ImageWriter& writeImage, const std::string& hint) {
    json inner = {{"width", number(image.size().width, false)},
                  {"height", number(image.size().height, false)},
                  {"scale", number(image.scale(), false)}};
    if (image.name()) inner["name"] = *image.name();
    if (writeImage) {
        if (auto file = writeImage(image, hint)) inner["file"] = *file;
    }
    return {{"image", inner}};
}

}  // namespace

std::string isoUtc(platform::Date date) {
    double seconds = date.timeIntervalSince1970();
    // Years 1 to 9999, which ISO 8601 writes with four digits; a date beyond
    // (computed from absurd figures in a damaged store) has no such text.
    if (!(seconds >= -62135596800.0 && seconds < 253402300799.5)) return "";
    double whole = std::floor(seconds);
    int millis = static_cast<int>(std::lround((seconds - whole) * 1000));
    if (millis == 1000) whole += 1, millis = 0;
    std::time_t t = static_cast<std::time_t>(whole);
    std::tm tm{};
    gmtime_r(&t, &tm);
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", tm.tm_year + 1900, tm.tm_mon + 1,
                  tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec, millis);
    return buffer;
}

json toJson(const platform::Colour& colour) {
    json inner = {{"h", colour.hue()}, {"s", colour.saturation()}, {"b", colour.brightness()}, {"a", colour.alpha()}};
    if (colour.name()) inner["name"] = *colour.name();
    return {{"colour", inner}};
}

json toJson(const platform::Font& font) {
    return {{"font", {{"size", number(font.size, false)}, {"weight", std::string(platform::fontWeightName(font.weight))}}}};
}

json toJson(const platform::Value& value, const ImageWriter& writeImage, const std::string& hint) {
    using Kind = platform::Value::Kind;
    switch (value.kind()) {
        case Kind::None: return nullptr;
        case Kind::Boolean: return value.boolValue();
        case Kind::Integer: return value.integerValue();
        case Kind::Real: return number(value.doubleValue(), value.isSinglePrecision());
        case Kind::String: return *value.string();
        case Kind::Date: {
            std::string text = isoUtc(*value.date());
            return {{"date", text.empty() ? json(nullptr) : json(text)}};
        }
        case Kind::Data: {
            json bytes = json::array();
            for (auto b : *value.data()) bytes.push_back(b);
            return {{"data", bytes}};
        }
        case Kind::Array: {
            json out = json::array();
            std::size_t i = 0;
            for (const auto& item : *value.array()) out.push_back(toJson(item, writeImage, hint + "-" + std::to_string(i++)));
            return out;
        }
        case Kind::Dictionary: {
            json out = json::object();
            for (const auto& [key, item] : *value.dictionary()) out[key] = toJson(item, writeImage, key);
            return out;
        }
        case Kind::Colour: return toJson(*value.colour());
        case Kind::Image: return imageJson(*value.image(), writeImage, hint);
    }
    return nullptr;
}

json viewToJson(const platform::View& view, const ImageWriter& writeImage) {
    json out = json::object();
    out["hidden"] = view.isHidden();
    out["text"] = view.text() ? json(*view.text()) : json(nullptr);
    out["font"] = view.font() ? toJson(*view.font()) : json(nullptr);
    out["image"] = view.image() ? imageJson(*view.image(), writeImage, view.name()) : json(nullptr);
    out["backgroundColor"] = view.backgroundColor() ? toJson(*view.backgroundColor()) : json(nullptr);
    out["cornerRadius"] = number(view.layer().cornerRadius(), false);
    return out;
}

}  // namespace velmorant::cli
