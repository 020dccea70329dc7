#pragma once

#include "platform/views/ViewTree.h"

#include <functional>
#include <string>
#include <string_view>

namespace velmorant::platform {

// The language a screen reader speaks the card in: the string table's lookup
// (English text as key) and the locale that formats numbers.
struct SpeechLanguage {
    std::function<std::string(std::string_view key)> localizedString;
    std::string localeId = "en_US";
};

// A label's text as a screen reader should say it: glyphs become words
// ("⑦" "7-day", "↗" "rising", "★★★⭒⭒" "3 of 5 stars"), "--" says there is no
// data, a range's hyphen becomes a dash, upper-cased words lose their capitals,
// and symbols that have no word (emoji) are dropped.
std::string spokenText(std::string_view text, const SpeechLanguage& language);

// What a screen reader says for the card: the texts of the visible views that
// are accessibility elements, in reading order (top to bottom, then left to
// right). A heading opens a sentence that the values after it complete
// ("Avg. 95.4%, 7-day 95.3%."); any other text is a sentence of its own.
std::string accessibilityText(const ViewTree& views, const SpeechLanguage& language);

}  // namespace velmorant::platform
