#pragma once

#include <string_view>

namespace velmorant::cli {

// The --help text of a command ("" for the program itself); empty when unknown.
std::string_view helpText(std::string_view command);

}  // namespace velmorant::cli
