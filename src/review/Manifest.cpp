#include "Manifest.h"

#include "BadInput.h"

#include <nlohmann/json.hpp>

namespace velmorant::review {

using json = nlohmann::json;

const ManifestItem* Manifest::find(std::string_view id) const {
    for (const ManifestItem& item : items)
        if (item.id == id) return &item;
    return nullptr;
}

namespace {

json toJson(const Manifest& m) {
    json items = json::array();
    for (const ManifestItem& i : m.items)
        items.push_back({{"id", i.id}, {"section", i.section}, {"card", i.card}, {"title", i.title}, {"name", i.name},
                         {"picture", i.picture}, {"pictureDigest", i.pictureDigest}, {"record", i.record},
                         {"recordDigest", i.recordDigest}, {"alt", i.alt}, {"width", i.width}, {"height", i.height}});
    const DrawingOptions& o = m.options;
    return {{"format", kManifestFormat},
            {"options",
             {{"scale", o.scale}, {"width", o.width}, {"locale", o.locale}, {"timeZone", o.timeZone}, {"now", o.now}}},
            {"inputs", m.inputs},
            {"facts", m.facts},
            {"language", m.language},
            {"items", items}};
}

Manifest manifestFromJson(const json& j, const std::string& where) {
    try {
        if (j.at("format").get<int>() != kManifestFormat)
            throw BadInput(where + ": written by another version of velmorant-snippet (format " +
                           j.at("format").dump() + "); draw it again");
        Manifest m;
        const json& o = j.at("options");
        m.options = {o.at("scale").get<double>(), o.at("width").get<double>(), o.at("locale").get<std::string>(),
                     o.at("timeZone").get<std::string>(), o.at("now").get<std::string>()};
        m.inputs = j.at("inputs").get<std::map<std::string, std::string>>();
        m.facts = j.at("facts").get<std::string>();
        m.language = j.at("language").get<std::string>();
        for (const json& i : j.at("items")) {
            ManifestItem item;
            for (auto [key, field] : {std::pair{"id", &item.id}, {"section", &item.section}, {"card", &item.card},
                                      {"title", &item.title}, {"name", &item.name}, {"picture", &item.picture},
                                      {"pictureDigest", &item.pictureDigest}, {"record", &item.record},
                                      {"recordDigest", &item.recordDigest}, {"alt", &item.alt}})
                *field = i.at(key).get<std::string>();
            item.width = i.at("width").get<double>();
            item.height = i.at("height").get<double>();
            m.items.push_back(std::move(item));
        }
        return m;
    } catch (const json::exception& e) {
        throw BadInput(where + ": not a gallery manifest (" + e.what() + ")");
    }
}

}  // namespace

std::string manifestText(const Manifest& manifest) { return toJson(manifest).dump(1) + "\n"; }

Manifest parseManifest(std::string_view text, const std::string& where) {
    json j;
    try {
        j = json::parse(text);
    } catch (const std::exception& e) {
        throw BadInput(where + ": not readable JSON (" + e.what() + ")");
    }
    return manifestFromJson(j, where);
}

}  // namespace velmorant::review
