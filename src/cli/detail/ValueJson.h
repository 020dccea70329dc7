#pragma once

// Values, views and widget-mirror tables as JSON documents, for the program's own sources.

#include "cli/GalleryHtml.h"
#include "cli/SnippetCard.h"
#include "platform/core/Value.h"
#include "platform/views/View.h"

#include <nlohmann/json.hpp>

#include <string>

namespace velmorant::cli {

// A value as the program prints it: numbers as the shortest text that reads
// back as the same float or double, dates as UTC ISO 8601 under "date",
// colours under "colour", images under "image", none as null.
nlohmann::json toJson(const platform::Value& value, const ImageWriter& writeImage = {},
                      const std::string& hint = "value");
nlohmann::json toJson(const platform::Colour& colour);
nlohmann::json toJson(const platform::Font& font);
// The attributes the snippet code sets on a view.
nlohmann::json viewToJson(const platform::View& view, const ImageWriter& writeImage = {});

// Empty for a date outside the years 1 to 9999 (printed as a null "date").
std::string isoUtc(platform::Date date);
// A number as printed: whole numbers as integers, a float as its shortest text.
nlohmann::json number(double value, bool singlePrecision);

// A widget mirrors' table for the index page: keys with their values as text.
MirrorTable mirrorTable(std::string title, const nlohmann::json& keys);

}  // namespace velmorant::cli
