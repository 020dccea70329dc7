#pragma once

// Records compared as parsed JSON documents, inside the review room.

#include "review/RecordCompare.h"

#include <nlohmann/json.hpp>

#include <vector>

namespace velmorant::review {

// Compares two view records as `show` prints them, view by view and field by field.
std::vector<FieldChange> compareViewRecords(const nlohmann::json& before, const nlohmann::json& after);

// Compares two widget-mirror tables (mirrors.json) key by key, with the night's
// results and with an empty store.
std::vector<FieldChange> compareMirrors(const nlohmann::json& before, const nlohmann::json& after);

}  // namespace velmorant::review
