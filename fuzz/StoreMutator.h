#pragma once

#include <cstdint>
#include <optional>
#include <random>
#include <span>
#include <vector>

namespace velmorant::fuzz {

// One change to a fuzzer input (the two stores) that knows property lists:
// one of the stores is parsed and its tree edited (nodes wrapped in arrays or
// dictionaries to deepen the nesting, duplicated, removed, given another
// kind), then written back as XML or binary; XML may then get markup the
// parser skips (comments, processing instructions, CDATA, a DOCTYPE internal
// subset) holding a copy of some of its own tags, or odd but valid forms of
// its tags. None when the chosen store does not parse: the caller then
// mutates bytes.
std::optional<std::vector<std::uint8_t>> mutateStoreInput(std::span<const std::uint8_t> input, std::mt19937& random);

}  // namespace velmorant::fuzz
