#include "platform/text/StringTable.h"

#include "platform/text/Text.h"

#include <unicode/unistr.h>
#include <unicode/utf16.h>

#include <fstream>
#include <sstream>

namespace velmorant::platform {
namespace {

using Entries = std::map<std::string, std::string, std::less<>>;

class StringsParser {
public:
    StringsParser(std::string_view text, std::vector<std::string>* problems) : t_(text), problems_(problems) {}

    std::optional<Entries> parse(std::string* error) {
        Entries entries;
        while (skipSpaceAndComments(), i_ < t_.size()) {
            entryReadable_ = true;
            auto key = token();
            if (!key) return fail(error, "expected a key");
            skipSpaceAndComments();
            if (i_ < t_.size() && t_[i_] == ';') {  // "key"; means the key is its own value
                ++i_;
                if (entryReadable_) entries[*key] = *key;
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
            if (entryReadable_) entries[*key] = *value;
        }
        return entries;
    }

private:
    std::size_t lineAt(std::size_t pos) const {
        std::size_t line = 1;
        for (std::size_t k = 0; k < pos && k < t_.size(); ++k) line += t_[k] == '\n';
        return line;
    }

    std::nullopt_t fail(std::string* error, const char* what) {
        if (error) *error = "line " + std::to_string(lineAt(i_)) + ": " + what;
        return std::nullopt;
    }

    // The entry being read is left out; the file goes on being read.
    void unreadable(std::size_t pos, const std::string& what) {
        entryReadable_ = false;
        if (problems_) problems_->push_back("line " + std::to_string(lineAt(pos)) + ": " + what);
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

    static int hexDigit(char c) {
        if (c >= '0' && c <= '9') return c - '0';
        if (c >= 'a' && c <= 'f') return c - 'a' + 10;
        if (c >= 'A' && c <= 'F') return c - 'A' + 10;
        return -1;
    }

    // The four hex digits after "\U"; reads only digits, so a short escape
    // never takes the characters after it.
    std::optional<UChar32> hexUnit() {
        UChar32 unit = 0;
        for (int n = 0; n < 4; ++n) {
            int digit = i_ < t_.size() ? hexDigit(t_[i_]) : -1;
            if (digit < 0) return std::nullopt;
            unit = unit * 16 + digit;
            ++i_;
        }
        return unit;
    }

    // After the "\U" or "\u" at `escape`: one UTF-16 unit, or a surrogate pair
    // written as two escapes.
    void unicodeEscape(std::size_t escape, std::string& out) {
        auto quoted = [&](std::size_t end) { return "\"" + std::string(t_.substr(escape, end - escape)) + "\""; };
        auto unit = hexUnit();
        if (!unit) {
            // Show what was written in place of the digits, up to the text's end.
            std::size_t end = escape + 2;
            while (end < t_.size() && end < escape + 6 && std::string_view("\"\\\n").find(t_[end]) == std::string_view::npos)
                ++end;
            return unreadable(escape, "bad escape " + quoted(end) + ": \\U needs four hexadecimal digits");
        }
        UChar32 cp = *unit;
        if (cp == 0) return unreadable(escape, "bad escape " + quoted(i_) + ": a text cannot hold U+0000");
        if (U16_IS_TRAIL(cp)) return unreadable(escape, "bad escape " + quoted(i_) + ": a low surrogate without a high one");
        if (U16_IS_LEAD(cp)) {
            std::optional<UChar32> low;
            if (i_ + 1 < t_.size() && t_[i_] == '\\' && (t_[i_ + 1] == 'U' || t_[i_ + 1] == 'u')) {
                i_ += 2;
                low = hexUnit();
            }
            if (!low || !U16_IS_TRAIL(*low))
                return unreadable(escape, "bad escape " + quoted(i_) + ": a high surrogate needs a low surrogate escape after it");
            cp = U16_GET_SUPPLEMENTARY(cp, *low);
        }
        icu::UnicodeString(cp).toUTF8String(out);
    }

    std::optional<std::string> token() {
        if (i_ >= t_.size()) return std::nullopt;
        if (t_[i_] != '"') {
            std::size_t start = i_;
            while (i_ < t_.size() && bareChar(t_[i_])) ++i_;
            if (i_ == start) return std::nullopt;
            return std::string(t_.substr(start, i_ - start));
        }
        const std::size_t open = i_++;
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
                case 'U': case 'u': unicodeEscape(i_ - 2, out); break;
                default: out += e;
            }
        }
        if (i_ >= t_.size()) return std::nullopt;
        ++i_;  // closing quote
        // Texts go on to the JSON printer and the font renderer, which need UTF-8.
        if (!isValidUtf8(out)) unreadable(open, "the text is not valid UTF-8");
        return out;
    }

    std::string_view t_;
    std::vector<std::string>* problems_;
    std::size_t i_ = 0;
    bool entryReadable_ = true;
};

std::string readText(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream buffer;
    buffer << in.rdbuf();
    std::string bytes = buffer.str();
    // Tables may come as UTF-16 with a byte-order mark (as the phone's tools
    // write them) or as UTF-8. Unpaired surrogates become U+FFFD on conversion.
    const bool littleEndian = bytes.rfind("\xFF\xFE", 0) == 0, bigEndian = bytes.rfind("\xFE\xFF", 0) == 0;
    if (littleEndian || bigEndian) {
        icu::UnicodeString u;
        for (std::size_t k = 2; k + 1 < bytes.size(); k += 2) {
            auto first = static_cast<unsigned char>(bytes[k]), second = static_cast<unsigned char>(bytes[k + 1]);
            u.append(static_cast<UChar>(littleEndian ? first | second << 8 : first << 8 | second));
        }
        std::string out;
        return u.toUTF8String(out);
    }
    if (bytes.rfind("\xEF\xBB\xBF", 0) == 0) bytes.erase(0, 3);
    return bytes;
}

}  // namespace

std::optional<Entries> StringTable::parse(std::string_view text, std::string* error,
                                          std::vector<std::string>* problems) {
    return StringsParser(text, problems).parse(error);
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
            std::vector<std::string> problems;
            auto entries = parse(readText(entry.path()), &error, &problems);
            if (!entries) {
                diagnostics.report("string table " + entry.path().string() + " is not readable (" + error +
                                   "); its texts are shown in English");
                continue;
            }
            for (const std::string& problem : problems)
                diagnostics.report("string table " + entry.path().string() + ", " + problem +
                                   "; that entry is shown in English");
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
