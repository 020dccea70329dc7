#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace velmorant::platform {

// Checks run on a store file's bytes before the property-list parser sees
// them: the parser recurses once per level of nesting when it frees (and, for
// binary files, when it reads) a tree, copies a binary object for every
// reference to it, and aborts on a NUL in a text. Each returns false and says
// what is wrong when the parser must not be given the bytes.

// Walks an XML property list token by token exactly as libplist 2.2's reader
// does (comments, CDATA, processing instructions and DOCTYPE internal subsets
// skipped the way it skips them, self-closing elements opening nothing), so
// the nesting it measures is the nesting the parser will build. Anything the
// reader would not accept as it goes is refused here too.
[[nodiscard]] bool checkXmlStructure(std::string_view text, int maxDepth, std::string* error);

// Follows a binary property list's object references without recursion:
// every reference in bounds, no object inside itself, no deeper than
// `maxDepth`, and no more values once references are followed (shared
// objects are copied by the parser) than the file has bytes.
[[nodiscard]] bool checkBinaryStructure(std::span<const std::uint8_t> bytes, int maxDepth, std::string* error);

}  // namespace velmorant::platform
