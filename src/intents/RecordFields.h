#pragma once

#include "metrics/RecordKeys.h"
#include "platform/core/Colour.h"
#include "platform/core/Value.h"
#include "platform/views/View.h"

#include <optional>
#include <string>
#include <string_view>

namespace velmorant::intents::detail {

// A record's text under `key`; none (which clears a label) when it is absent or not a text.
[[nodiscard]] inline std::optional<std::string> recordText(const platform::Dictionary& record, std::string_view key) {
    const platform::Value* value = record.objectForKey(key);
    if (!value || !value->string()) return std::nullopt;
    return *value->string();
}

// A record's colour under `key`; none (no background) when it is absent or not a colour.
[[nodiscard]] inline std::optional<platform::Colour> recordColour(const platform::Dictionary& record,
                                                                std::string_view key) {
    const platform::Value* value = record.objectForKey(key);
    return value ? value->colour() : std::nullopt;
}

// Shows the record's picture; without one the view keeps what it showed.
inline void setImageFrom(platform::View& imageView, const platform::Dictionary& record) {
    const platform::Value* value = record.objectForKey(metrics::keys::kRingsImage);
    if (value && value->image()) imageView.setImage(value->image());
}

}  // namespace velmorant::intents::detail
