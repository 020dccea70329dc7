#pragma once

#include "platform/core/Value.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace velmorant::platform {

enum class PlistFormat { Binary, Xml };

struct PlistDocument {
    Dictionary root;
    PlistFormat format = PlistFormat::Binary;
};

// Store files are untrusted: anything larger or deeper than this is refused
// before the parser sees it (the parser frees, and reads binary files,
// recursively), and the parsed tree is read with the depth checked again.
inline constexpr std::size_t kMaxPlistBytes = 32u << 20;
inline constexpr int kMaxPlistDepth = 64;

// Reads a binary or XML property list whose root is a dictionary; on failure
// returns none and says what is wrong.
[[nodiscard]] std::optional<PlistDocument> parsePlist(std::span<const std::uint8_t> bytes, std::string* error);

// Writes a dictionary as a property list. Values that have no property-list
// form (colours, images) make it fail, naming the key.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> serialisePlist(const Dictionary& root, PlistFormat format,
                                                        std::string* error);

}  // namespace velmorant::platform
