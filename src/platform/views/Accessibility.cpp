#include "platform/views/Accessibility.h"

#include "platform/text/detail/IcuStrings.h"
#include "platform/text/StringFormat.h"
#include "platform/text/Text.h"
#include "platform/views/ViewLayout.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace velmorant::platform {
namespace {

constexpr std::string_view kFullStar = "★";
constexpr std::string_view kHalfStar = "⭒";

std::string word(const SpeechLanguage& language, std::string_view key) {
    return language.localizedString ? language.localizedString(key) : std::string(key);
}

// A run of rating stars said as a count ("3 of 5 stars"); a lone star is "star".
std::string speakStars(std::string_view text, const SpeechLanguage& language) {
    std::string out;
    std::size_t i = 0;
    while (i < text.size()) {
        int full = 0, total = 0;
        std::size_t j = i;
        for (;;) {
            if (text.substr(j).starts_with(kFullStar)) ++full, ++total, j += kFullStar.size();
            else if (text.substr(j).starts_with(kHalfStar)) ++total, j += kHalfStar.size();
            else break;
        }
        if (total == 0) {
            out += text[i++];
            continue;
        }
        std::string said = total == 1 && full == 1
                               ? word(language, "star")
                               : localizedStringWithFormat(language.localeId, word(language, "%d of %d stars"),
                                                           {full, total});
        out += " " + said + " ";
        i = j;
    }
    return out;
}

// Marks that no word stands for: emoji and other pictographs, their joiners
// and presentation selectors. (Asked of the character's category: a set built
// from a pattern costs every run two million instructions.)
bool isUnspokenMark(UChar32 c) {
    int8_t type = u_charType(c);
    return type == U_OTHER_SYMBOL || type == U_MODIFIER_SYMBOL || type == U_FORMAT_CHAR || c == 0xFE0E || c == 0xFE0F;
}

// True for a text written in capitals only as a style: four letters or more
// ("BED TIME"), or an abbreviation with its full stop ("AVG."); an acronym
// such as "HRV" keeps its capitals.
bool isStyledCapitals(std::string_view text) {
    icu::UnicodeString s = fromUtf8(text);
    int letters = 0;
    for (int32_t i = 0; i < s.length();) {
        UChar32 c = s.char32At(i);
        i += U16_LENGTH(c);
        if (!u_isalpha(c)) continue;
        if (!u_isupper(c)) return false;
        ++letters;
    }
    return letters >= 4 || (letters > 0 && s.trim().endsWith(u"."));
}

// Drops unspoken marks and collapses spaces.
std::string tidy(std::string_view text) {
    icu::UnicodeString in = fromUtf8(text);
    std::vector<icu::UnicodeString> words(1);
    for (int32_t i = 0; i < in.length();) {
        UChar32 c = in.char32At(i);
        i += U16_LENGTH(c);
        if (isUnspokenMark(c)) continue;
        if (u_isUWhiteSpace(c)) {
            if (!words.back().isEmpty()) words.emplace_back();
        } else {
            words.back().append(c);
        }
    }
    std::string out;
    for (const auto& w : words) {
        if (w.isEmpty()) continue;
        if (!out.empty()) out += ' ';
        out += toUtf8(w);
    }
    return out;
}

struct Sentence {
    std::string text;
    bool opensWithHeading = false;
    int values = 0;
};

}  // namespace

std::string spokenText(std::string_view text, const SpeechLanguage& language) {
    std::string s(text);
    if (s.find_first_not_of(" -") == std::string::npos && s.find("--") != std::string::npos)
        return word(language, "no data");
    if (isStyledCapitals(s)) s = capitalizedString(lowercaseString(s));
    s = speakStars(s, language);
    s = stringByReplacing(s, "⑦", " " + word(language, "7-day") + " ");
    s = stringByReplacing(s, "↗", " " + word(language, "rising"));
    s = stringByReplacing(s, "↘", " " + word(language, "falling"));
    s = stringByReplacing(s, "°=", "° " + word(language, "unchanged"));
    s = stringByReplacing(s, "°", " " + word(language, "degrees"));
    s = stringByReplacing(s, " - ", " – ");
    return tidy(s);
}

std::string accessibilityText(const ViewTree& views, const SpeechLanguage& language) {
    Size card;
    for (const auto& view : views.views())
        if (view->parent().empty() && !view->isHidden()) card = view->frame().size();
    ViewLayout layout(views, card);

    struct Element {
        Rect frame;
        std::string text;
        bool header;
    };
    std::vector<Element> elements;
    for (const auto& view : views.views()) {
        if (!view->isAccessibilityElement() || !view->text() || !views.isShown(*view)) continue;
        std::string said = spokenText(*view->text(), language);
        if (!said.empty()) elements.push_back({layout.frameOf(view->name()), said, view->isHeader()});
    }
    // Reading order: rows from the top (tops within a point form one row), then left to right.
    std::stable_sort(elements.begin(), elements.end(), [](const Element& a, const Element& b) {
        double rowA = std::round(a.frame.y), rowB = std::round(b.frame.y);
        return rowA != rowB ? rowA < rowB : a.frame.x < b.frame.x;
    });

    std::vector<Sentence> sentences;
    for (const auto& e : elements) {
        if (e.header || sentences.empty() || !sentences.back().opensWithHeading) {
            sentences.push_back({e.text, e.header, 0});
            continue;
        }
        Sentence& s = sentences.back();
        s.text += (s.values++ == 0 ? " " : ", ") + e.text;
    }
    std::string out;
    for (auto& s : sentences) {
        if (s.opensWithHeading && s.values == 0) s.text += " " + word(language, "no data");
        if (!s.text.ends_with('.') && !s.text.ends_with('!') && !s.text.ends_with('?') && !s.text.ends_with("…"))
            s.text += '.';
        if (!out.empty()) out += ' ';
        out += s.text;
    }
    return out;
}

}  // namespace velmorant::platform
