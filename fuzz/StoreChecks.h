#pragma once

// Checks shared by the store fuzzer and the reliability tests: what counts as
// garbage on screen, and reading a store file's bytes.

#include "platform/core/Value.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace velmorant::fuzz {

// Whether the text holds "nan", "inf" or "(null)" in any case, or the sign for infinity.
bool looksLikeGarbage(std::string_view text);

// Adds to `found` every text in `value` that looks like garbage and every
// number or date that is not finite, each named by where it is.
void findGarbage(const std::string& where, const platform::Value& value, std::vector<std::string>& found);

// The file's bytes; empty when it cannot be read.
std::vector<std::uint8_t> readFileBytes(const std::filesystem::path& file);

}  // namespace velmorant::fuzz
