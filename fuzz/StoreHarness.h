#pragma once

#include "StoreChecks.h"

#include "platform/core/Date.h"
#include "platform/core/Value.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace velmorant::fuzz {

// One hostile input: the standard preferences and the shared store, each as
// the bytes of a store file. Encoded as a two-byte big-endian length of the
// standard part, that part, then the shared store; an input shorter than two
// bytes is all shared store.
struct StoreInput {
    std::vector<std::uint8_t> standard;
    std::vector<std::uint8_t> shared;
};

StoreInput decodeInput(std::span<const std::uint8_t> bytes);
std::vector<std::uint8_t> encodeInput(const StoreInput& input);

// The instants every input is read at: a morning, when the night's results are
// the current day's, and the evening of the same day, past the night hour,
// when the cached sleep bank is shown.
platform::Date morning();
platform::Date evening();

// Reads both stores from the input the way the store files are read, runs every
// request, the widget write-backs, the palette and every snippet (the nine
// intents and an unknown one) on them, at both instants, and returns what is
// wrong: an escaped exception, a file refused without a reason, a store read
// although nested past the limit, a store that does not read back as it was
// written, garbage such as "nan" in a text, a snippet that did not complete.
// Empty when all is well.
// With `emptyStoresChecked`, an input whose stores are both absent or refused
// stops after reading them: everything after would run on empty stores,
// which gives the same outcome every time.
std::vector<std::string> checkStoreInput(std::span<const std::uint8_t> bytes, bool emptyStoresChecked = false);

}  // namespace velmorant::fuzz
