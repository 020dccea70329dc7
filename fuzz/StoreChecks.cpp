#include "StoreChecks.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <fstream>
#include <iterator>

namespace velmorant::fuzz {

using platform::Value;

bool looksLikeGarbage(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
    // ICU writes an infinite number as the sign.
    for (const char* bad : {"nan", "inf", "(null)", "\u221E"})
        if (lower.find(bad) != std::string::npos) return true;
    return false;
}

void findGarbage(const std::string& where, const Value& value, std::vector<std::string>& found) {
    switch (value.kind()) {
        case Value::Kind::String:
            if (looksLikeGarbage(*value.string())) found.push_back(where + " shows garbage: \"" + *value.string() + "\"");
            break;
        case Value::Kind::Real:
            if (!std::isfinite(value.doubleValue())) found.push_back(where + " is not a finite number");
            break;
        case Value::Kind::Date:
            if (!std::isfinite(value.date()->timeIntervalSince1970())) found.push_back(where + " is not a finite date");
            break;
        case Value::Kind::Dictionary:
            for (const auto& [key, item] : *value.dictionary()) findGarbage(where + "." + key, item, found);
            break;
        case Value::Kind::Array:
            for (const Value& item : *value.array()) findGarbage(where + "[]", item, found);
            break;
        default: break;
    }
}

std::vector<std::uint8_t> readFileBytes(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

}  // namespace velmorant::fuzz
