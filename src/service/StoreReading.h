#pragma once

#include "RenderRequest.h"
#include "demo/DemoData.h"

#include <filesystem>

namespace velmorant::service {

// Reads the two store files of `dir` as they are now, each while holding a
// shared lock on its lock file when there is one (never creating it), so no
// writer following the lock protocol is half-way through. A missing file
// reads as empty.
StoreInput readStoreFiles(const std::filesystem::path& dir);

// The stores `input` holds, parsed with the store reader's guards; throws
// BadRequest with the reader's message for a body that is not a store. A
// server store file that cannot be read counts as empty, as the program reads it.
demo::DemoStores parseStores(const StoreInput& input, const platform::Platform& platform);

}  // namespace velmorant::service
