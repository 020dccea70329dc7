#include "platform/text/DatePattern.h"

#include "platform/text/detail/IcuStrings.h"

#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf16.h>

#include <vector>

namespace velmorant::platform {
namespace {

// A date pattern split into fields (runs of one pattern letter) and literal
// text (quoted text, or any single other character).
struct PatternToken {
    bool field;
    char16_t letter;
    icu::UnicodeString text;
};

bool isPatternLetter(char16_t c) { return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'); }

std::vector<PatternToken> tokenize(const icu::UnicodeString& pattern) {
    std::vector<PatternToken> tokens;
    const int32_t length = pattern.length();
    int32_t i = 0;
    while (i < length) {
        const char16_t c = pattern.charAt(i);
        int32_t end = i + 1;
        if (c == u'\'') {
            // A quoted run ends at the next single quote; '' inside it is a
            // quote, and '' on its own is a quote too.
            while (end < length) {
                if (pattern.charAt(end) == u'\'') {
                    if (end + 1 < length && pattern.charAt(end + 1) == u'\'' && end > i + 1) {
                        end += 2;
                        continue;
                    }
                    ++end;
                    break;
                }
                ++end;
            }
            tokens.push_back({false, 0, icu::UnicodeString(pattern, i, end - i)});
        } else if (isPatternLetter(c)) {
            while (end < length && pattern.charAt(end) == c) ++end;
            tokens.push_back({true, c, icu::UnicodeString(pattern, i, end - i)});
        } else {
            end = i + U16_LENGTH(pattern.char32At(i));
            tokens.push_back({false, 0, icu::UnicodeString(pattern, i, end - i)});
        }
        i = end;
    }
    return tokens;
}

bool isDayPeriod(const PatternToken& token) {
    return token.field && (token.letter == u'a' || token.letter == u'b' || token.letter == u'B');
}

bool isBlank(const PatternToken& token) {
    return !token.field && token.text.length() > 0 && u_isUWhiteSpace(token.text.char32At(0));
}

}  // namespace

std::string patternKeepingToTemplate(std::string_view bestPattern, std::string_view dateTemplate) {
    const auto asked = tokenize(fromUtf8(dateTemplate));
    bool asksDayPeriod = false, hasLiterals = false;
    for (const auto& token : asked) {
        asksDayPeriod = asksDayPeriod || isDayPeriod(token);
        hasLiterals = hasLiterals || !token.field;
    }

    auto tokens = tokenize(fromUtf8(bestPattern));
    if (!asksDayPeriod) {
        for (std::size_t i = 0; i < tokens.size();) {
            if (!isDayPeriod(tokens[i])) {
                ++i;
                continue;
            }
            // The marker goes with the space that set it apart.
            std::size_t from = i, to = i + 1;
            while (from > 0 && isBlank(tokens[from - 1])) --from;
            if (from == i)
                while (to < tokens.size() && isBlank(tokens[to])) ++to;
            tokens.erase(tokens.begin() + static_cast<std::ptrdiff_t>(from),
                         tokens.begin() + static_cast<std::ptrdiff_t>(to));
            i = from;
        }
    }
    if (!hasLiterals && !asked.empty()) std::erase_if(tokens, [](const PatternToken& t) { return !t.field; });

    icu::UnicodeString pattern;
    for (const auto& token : tokens) pattern += token.text;
    std::string out;
    pattern.toUTF8String(out);
    return out;
}

}  // namespace velmorant::platform
