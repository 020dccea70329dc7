#pragma once

#include <string>
#include <string_view>

namespace velmorant::platform {

// The phone's string case operations (locale-independent, full Unicode).
std::string uppercaseString(std::string_view text);
std::string lowercaseString(std::string_view text);
// Each word's first letter upper-cased, the rest lower-cased: "time until bed" -> "Time Until Bed".
std::string capitalizedString(std::string_view text);

// Sets up what ICU makes once per process on first use for the functions above (the root
// locale, case mapping, word breaks). ICU publishes it with atomics a thread sanitizer cannot
// see, so threads that set themselves up one at a time call this under their lock.
void prepareTextCasing();

// True when `text` is well-formed UTF-8 (no stray, overlong or surrogate sequences).
bool isValidUtf8(std::string_view text);

// Every occurrence of `target` replaced by `replacement`.
std::string stringByReplacing(std::string_view text, std::string_view target, std::string_view replacement);

// `text` made safe inside HTML text and quoted attributes (& < > " ' escaped).
std::string escapeHtml(std::string_view text);

}  // namespace velmorant::platform
