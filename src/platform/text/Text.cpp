#include "platform/text/Text.h"

#include "platform/text/detail/IcuStrings.h"

#include <unicode/brkiter.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

#include <cstdint>

#include <memory>

namespace velmorant::platform {
std::string uppercaseString(std::string_view text) { return toUtf8(fromUtf8(text).toUpper(icu::Locale::getRoot())); }

std::string lowercaseString(std::string_view text) { return toUtf8(fromUtf8(text).toLower(icu::Locale::getRoot())); }

std::string capitalizedString(std::string_view text) {
    // Word starts as ICU's title casing finds them ("today's" stays one word).
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::BreakIterator> words(icu::BreakIterator::createWordInstance(icu::Locale::getRoot(), status));
    icu::UnicodeString s = fromUtf8(text);
    if (U_FAILURE(status)) return toUtf8(s.toTitle(nullptr, icu::Locale::getRoot()));
    return toUtf8(s.toTitle(words.get(), icu::Locale::getRoot()));
}

void prepareTextCasing() {
    static_cast<void>(uppercaseString("a"));
    static_cast<void>(lowercaseString("A"));
    static_cast<void>(capitalizedString("a b"));
}

bool isValidUtf8(std::string_view text) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = static_cast<std::int32_t>(text.size());
    for (std::int32_t i = 0; i < length;) {
        UChar32 c;
        U8_NEXT(bytes, i, length, c);
        if (c < 0) return false;
    }
    return true;
}

std::string stringByReplacing(std::string_view text, std::string_view target, std::string_view replacement) {
    std::string out(text);
    if (target.empty()) return out;
    std::size_t pos = 0;
    while ((pos = out.find(target, pos)) != std::string::npos) {
        out.replace(pos, target.size(), replacement);
        pos += replacement.size();
    }
    return out;
}

std::string escapeHtml(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (char c : text) {
        switch (c) {
            case '&': out += "&amp;"; break;
            case '<': out += "&lt;"; break;
            case '>': out += "&gt;"; break;
            case '"': out += "&quot;"; break;
            case '\'': out += "&#39;"; break;
            default: out += c;
        }
    }
    return out;
}

}  // namespace velmorant::platform
