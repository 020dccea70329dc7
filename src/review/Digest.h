#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace velmorant::review {

// SHA-256 over any number of pieces, as lower-case hex.
class Digest {
public:
    Digest();
    ~Digest();
    Digest(const Digest&) = delete;
    Digest& operator=(const Digest&) = delete;

    Digest& add(std::string_view bytes);
    // The digest of everything added; the object is spent afterwards.
    std::string hex();

private:
    struct Context;
    std::unique_ptr<Context> context_;
};

std::string sha256(std::string_view bytes);

// A whole file's bytes; throws std::runtime_error naming the file when it cannot be read.
std::string readBytes(const std::filesystem::path& path);

}  // namespace velmorant::review
