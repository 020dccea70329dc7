#include "StringTable.h"

#include <unicode/unistr.h>

#include <fstream>
#include <sstream>

namespace velmorant::platform {
namespace {

class StringsParser {
public:
    explicit StringsParser(std::string_view text) : t_(text) {}

    std::optional<std::map<std::string, std::string, std::less<>>> parse(std::string* error) {
        std::map<std::string, std::string, std::less<>> entries;
        while (skipSpaceAndComments(), i_ < t_.size()) {
            auto key = token();
            if (!key) return fail(error, "expected a key");
            skipSpaceAndComments();
            if (i_ < t_.size() && t_[i_] == ';') {  // "key"; means the key is its own value
                ++i_;
                entries[*key] = *key;
                continue;
            }
            if (i_ >= t_.size() || t_[i_] != '=') return fail(error, "expected '=' after a key");
            ++i_;
            skipSpaceAndComments();
            auto value = token();
            if (!value) return fail(error, "expected a value");
            skipSpaceAndComments();
            if (i_ >= t_.size() || t_[i_] != ';') return fail(error, "expected ';' after a value");
            ++i_;
            entries[*key] = *value;
        }
        return entries;
    }

private:
    std::nullopt_t fail(std::string* error, const char* what) {
        if (error) {
            std::size_t line = 1;
            for (std::size_t k = 0; k < i_ && k < t_.size(); ++k) line += t_[k] == '\n';
            *error = "line " + std::to_string(line) + ": " + what;
        }
        return std::nullopt;
    }

    void skipSpaceAndComments() {
        while (i_ < t_.size()) {
            char c = t_[i_];
            if (c == ' ' || c == '\t' || c == '\n' || c == '\r') {
                ++i_;
            } else if (t_.substr(i_, 2) == "//") {
                while (i_ < t_.size() && t_[i_] != '\n') ++i_;
            } else if (t_.substr(i_, 2) == "/*") {
                auto end = t_.find("*/", i_ + 2);
                i_ = end == std::string_view::npos ? t_.size() : end + 2;
            } else {
                return;
            }
        }
    }

    static bool bareChar(char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               std::string_view("_$.:/-").find(c) != std::string_view::npos;
    }

    std::optional<std::string> token() {
        if (i_ >= t_.size()) return std::nullopt;
        if (t_[i_] != '"') {
            std::size_t start = i_;
            while (i_ < t_.size() && bareChar(t_[i_])) ++i_;
            if (i_ == start) return std::nullopt;
            return std::string(t_.substr(start, i_ - start));
        }
        ++i_;
        std::string out;
        while (i_ < t_.size() && t_[i_] != '"') {
            char c = t_[i_++];
            if (c != '\\') {
                out += c;
                continue;
            }
            if (i_ >= t_.size()) return std::nullopt;
            char e = t_[i_++];
            switch (e) {
                case 'n': out += '\n'; break;
                case 't': out += '\t'; break;
                case 'r': out += '\r'; break;
                case 'U': case 'u': {
                    if (i_ + 4 > t_.size()) return std::nullopt;
                    UChar32 cp = static_cast<UChar32>(std::stoul(std::string(t_.substr(i_, 4)), nullptr, 16));
                    i_ += 4;
                    icu::UnicodeString(cp).toUTF8String(out);
                    break;
                }
                default: out += e;
            }
        }
        if (i_ >= t_.size()) return std::nullopt;
        ++i_;  // closing quote
        return out;
    }

    std::string_view t_;
    std::size_t i_ = 0;
};

std::string readText(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream buffer;
    buffer << in.rdbuf();
    std::string bytes = buffer.str();
    // Tables may come as UTF-16 (as the phone's tools write them) or UTF-8.
    if (bytes.size() >= 2 && static_cast<unsigned char>(bytes[0]) == 0xFF && static_cast<unsigned char>(bytes[1]) == 0xFE) {
        icu::UnicodeString u(reinterpret_cast<const UChar*>(bytes.data() + 2), static_cast<int32_t>((bytes.size() - 2) / 2));
        std::string out;
        return u.toUTF8String(out);
    }
    if (bytes.rfind("\xEF\xBB\xBF", 0) == 0) bytes.erase(0, 3);
    return bytes;
}

}  // namespace

std::optional<std::map<std::string, std::string, std::less<>>> StringTable::parse(std::string_view text,
                                                                                 std::string* error) {
    return StringsParser(text).parse(error);
}

StringTable StringTable::load(const std::filesystem::path& stringsDir, std::string_view localeId,
                              Diagnostics& diagnostics) {
    StringTable table;
    std::string id(localeId);
    std::string language = id.substr(0, id.find_first_of("_-@"));
    for (const std::string& name : {id, language}) {
        std::filesystem::path dir = stringsDir / (name + ".lproj");
        std::error_code ec;
        if (name.empty() || !std::filesystem::is_directory(dir, ec)) continue;
        for (const auto& entry : std::filesystem::directory_iterator(dir, ec)) {
            if (entry.path().extension() != ".strings") continue;
            std::string error;
            auto entries = parse(readText(entry.path()), &error);
            if (!entries) {
                diagnostics.report("string table " + entry.path().string() + " is not readable (" + error +
                                   "); its texts are shown in English");
                continue;
            }
            table.tables_[entry.path().stem().string()] = std::move(*entries);
        }
        break;
    }
    return table;
}

std::string StringTable::localizedStringForKey(std::string_view key, std::string_view value,
                                               std::string_view table) const {
    auto t = tables_.find(table.empty() ? std::string_view("Localizable") : table);
    if (t != tables_.end()) {
        auto e = t->second.find(key);
        if (e != t->second.end()) return e->second;
    }
    return std::string(value.empty() ? key : value);
}

}  // namespace velmorant::platform
