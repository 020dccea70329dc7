#pragma once

#include "platform/core/Date.h"
#include "platform/text/TimeZone.h"

#include <optional>
#include <string_view>

namespace velmorant::cli {

// Reads an ISO 8601 date-time ("2024-03-05T10:00:00", with optional
// fraction and offset, or a plain "2024-03-05"); without an offset it is
// local time in `zone`. None when the text is not such a date.
[[nodiscard]] std::optional<platform::Date> parseIsoDate(std::string_view text, const platform::TimeZone& zone);

}  // namespace velmorant::cli
