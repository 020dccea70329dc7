#pragma once

#include <filesystem>
#include <functional>
#include <string_view>

namespace velmorant::review {

// Writes a file whole or not at all: into a fresh file beside it, then renamed over it.
void writeFileAtomically(const std::filesystem::path& path, std::string_view bytes);

// Fills a fresh folder beside `target` with `fill`, then exchanges it with
// `target` in one step and removes what was there; if `fill` throws, the new
// folder goes and `target` stays as it was.
void replaceFolder(const std::filesystem::path& target, const std::function<void(const std::filesystem::path&)>& fill);

}  // namespace velmorant::review
