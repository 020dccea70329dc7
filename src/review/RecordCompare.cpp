#include "detail/RecordJson.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <set>

namespace velmorant::review {
namespace {

using json = nlohmann::json;

std::string decimal(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.4g", value);
    return text;
}

// A colour as #RRGGBB (with its opacity when not opaque), from hue, saturation and brightness.
std::string colourWords(const json& c) {
    double h = c.value("h", 0.0), s = c.value("s", 0.0), v = c.value("b", 0.0), a = c.value("a", 1.0);
    h = (h - std::floor(h)) * 6;
    int sector = static_cast<int>(h) % 6;
    double f = h - std::floor(h), p = v * (1 - s), q = v * (1 - s * f), t = v * (1 - s * (1 - f));
    double rgb[6][3] = {{v, t, p}, {q, v, p}, {p, v, t}, {p, q, v}, {t, p, v}, {v, p, q}};
    char text[40];
    auto byte = [](double x) { return static_cast<int>(std::lround(std::clamp(x, 0.0, 1.0) * 255)); };
    std::snprintf(text, sizeof text, "#%02X%02X%02X", byte(rgb[sector][0]), byte(rgb[sector][1]), byte(rgb[sector][2]));
    std::string words = text;
    if (a < 1) words += " at " + decimal(a * 100) + " %";
    if (c.contains("name")) words += " (" + c["name"].get<std::string>() + ")";
    return words;
}

// A value of a record as a reader would say it.
std::string say(const json& value) {
    if (value.is_null()) return "none";
    if (value.is_string()) return "\"" + value.get<std::string>() + "\"";
    if (value.is_boolean()) return value.get<bool>() ? "yes" : "no";
    if (value.is_number()) return decimal(value.get<double>());
    if (value.is_object() && value.contains("colour")) return colourWords(value["colour"]);
    if (value.is_object() && value.contains("font"))
        return decimal(value["font"].value("size", 0.0)) + " pt " + value["font"].value("weight", "");
    if (value.is_object() && value.contains("image")) {
        const json& i = value["image"];
        std::string size = decimal(i.value("width", 0.0)) + " × " + decimal(i.value("height", 0.0)) + " pt";
        return i.contains("name") ? i["name"].get<std::string>() + " " + size : "a drawn picture " + size;
    }
    if (value.is_object() && value.contains("width") && value.contains("height"))
        return decimal(value["width"].get<double>()) + " × " + decimal(value["height"].get<double>()) + " pt";
    return value.dump();
}

// The field's kind, as the report names it.
std::string fieldWord(const std::string& key) {
    if (key == "backgroundColor") return "colour";
    if (key == "cornerRadius") return "corner radius";
    return key;
}

void compareObjects(const std::string& subject, const json& before, const json& after, std::vector<FieldChange>& changes,
                    std::string (*word)(const std::string&)) {
    std::set<std::string> keys;
    for (const json* side : {&before, &after})
        if (side->is_object())
            for (const auto& [key, value] : side->items()) keys.insert(key);
    for (const std::string& key : keys) {
        json a = before.is_object() && before.contains(key) ? before[key] : json();
        json b = after.is_object() && after.contains(key) ? after[key] : json();
        if (a != b) changes.push_back({subject.empty() ? key : subject, word(key), say(a), say(b)});
    }
}

std::string valueWord(const std::string&) { return "value"; }

}  // namespace

std::string FieldChange::words() const { return subject + " " + field + " " + before + " → " + after; }

std::vector<FieldChange> compareViewRecords(const json& before, const json& after) {
    std::vector<FieldChange> changes;
    auto part = [](const json& record, const char* key) { return record.is_object() && record.contains(key) ? record[key] : json(); };
    if (part(before, "size") != part(after, "size"))
        changes.push_back({"card", "frame", say(part(before, "size")), say(part(after, "size"))});
    json beforeViews = part(before, "views"), afterViews = part(after, "views");
    std::set<std::string> views;
    for (const json* side : {&beforeViews, &afterViews})
        if (side->is_object())
            for (const auto& [name, view] : side->items()) views.insert(name);
    for (const std::string& name : views)
        compareObjects(name, part(beforeViews, name.c_str()), part(afterViews, name.c_str()), changes, fieldWord);
    if (part(before, "accessibility") != part(after, "accessibility"))
        changes.push_back({"card", "spoken text", say(part(before, "accessibility")), say(part(after, "accessibility"))});
    if (part(before, "success") != part(after, "success"))
        changes.push_back({"card", "success", say(part(before, "success")), say(part(after, "success"))});
    return changes;
}

std::vector<FieldChange> compareMirrors(const json& before, const json& after) {
    std::vector<FieldChange> changes;
    for (const char* table : {"night", "empty"}) {
        std::vector<FieldChange> found;
        compareObjects("", before.value(table, json::object()), after.value(table, json::object()), found, valueWord);
        for (FieldChange& change : found) {
            change.subject = std::string(table == std::string("night") ? "with the night's results, " : "with an empty store, ") +
                             change.subject;
            changes.push_back(std::move(change));
        }
    }
    if (before.value("order", json()) != after.value("order", json()))
        changes.push_back({"mirrors", "order", say(before.value("order", json())), say(after.value("order", json()))});
    return changes;
}

}  // namespace velmorant::review
