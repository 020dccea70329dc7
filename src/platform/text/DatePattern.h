#pragma once

#include <string>
#include <string_view>

namespace velmorant::platform {

// A locale's best pattern for a template (DateFormatter::dateFormatFromTemplate), held to the
// fields the template asks for: without an AM/PM field in the template the pattern loses its
// AM/PM marker and the space that set it apart, and a template written without separators keeps
// only the pattern's fields ("HHmm" stays "HHmm", not "HH:mm").
std::string patternKeepingToTemplate(std::string_view bestPattern, std::string_view dateTemplate);

}  // namespace velmorant::platform
