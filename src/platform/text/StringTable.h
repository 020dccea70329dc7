#pragma once

#include "platform/core/Diagnostics.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmorant::platform {

// The application's localisation tables: Localizable.strings-style files
// ("key" = "value";) kept per language as resources/strings/LANG.lproj/TABLE.strings.
class StringTable {
public:
    StringTable() = default;  // no translations: every lookup gives its key

    // Loads the tables of the best language for the locale (de_DE -> de_DE.lproj,
    // then de.lproj); a locale without tables leaves the English keys.
    // A table file that cannot be read is reported and left out; so is each
    // entry that parse() leaves out, with its file and line.
    static StringTable load(const std::filesystem::path& stringsDir, std::string_view localeId,
                            Diagnostics& diagnostics);

    // The phone's localizedStringForKey:value:table: the translation, else
    // `value` when it is not empty, else the key itself. An empty table name is
    // the default table "Localizable".
    std::string localizedStringForKey(std::string_view key, std::string_view value = "",
                                      std::string_view table = "") const;

    // Parses the contents of one .strings file; on a syntax error returns none
    // and says where. An entry whose text cannot be read exactly (an escape that
    // is not a character, bytes that are not UTF-8) is left out, so its key shows
    // the English text, and `problems` gets one "line N: ..." note for it.
    static std::optional<std::map<std::string, std::string, std::less<>>> parse(
        std::string_view text, std::string* error, std::vector<std::string>* problems = nullptr);

private:
    std::map<std::string, std::map<std::string, std::string, std::less<>>, std::less<>> tables_;
};

}  // namespace velmorant::platform
