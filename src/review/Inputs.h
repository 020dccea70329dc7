#pragma once

#include <filesystem>
#include <string>

namespace velmorant::review {

// The running program's build: its GNU build id when the linker gave it one,
// else the digest of the executable's bytes. A rebuilt program with other
// code has another.
std::string programDigest();

// The font files the font configuration `fontsConf` accepts, named with their
// size and modification time: a font package upgrade changes it.
std::string fontsDigest(const std::filesystem::path& fontsConf);

// Every regular file below `dir` (artwork, string tables, interface description), name and bytes.
std::string folderDigest(const std::filesystem::path& dir);

}  // namespace velmorant::review
