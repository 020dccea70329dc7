#pragma once

#include <unicode/unistr.h>

#include <string>
#include <string_view>

namespace velmorant::platform {

// Our strings are UTF-8; ICU's are UTF-16.
inline icu::UnicodeString fromUtf8(std::string_view text) {
    return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

inline std::string toUtf8(const icu::UnicodeString& text) {
    std::string out;
    text.toUTF8String(out);
    return out;
}

}  // namespace velmorant::platform
