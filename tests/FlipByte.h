#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>

// Turns the bits of the byte at `offset` of `file` over, in place: damage a
// checksum or a header field must catch.
inline void flipByte(const std::filesystem::path& file, std::uintmax_t offset) {
    std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
    stream.seekg(static_cast<std::streamoff>(offset));
    char byte = 0;
    stream.get(byte);
    stream.seekp(static_cast<std::streamoff>(offset));
    stream.put(static_cast<char>(~byte));
}
