#include "Digest.h"

#include <glib.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace velmorant::review {

struct Digest::Context {
    std::unique_ptr<GChecksum, decltype(&g_checksum_free)> sum{g_checksum_new(G_CHECKSUM_SHA256), &g_checksum_free};
};

Digest::Digest() : context_(std::make_unique<Context>()) {
    if (!context_->sum) throw std::runtime_error("SHA-256 is not available");
}

Digest::~Digest() = default;

Digest& Digest::add(std::string_view bytes) {
    // GChecksum takes a signed length: feed very large pieces in parts.
    constexpr std::size_t kPiece = std::size_t{1} << 30;
    for (std::size_t at = 0; at < bytes.size(); at += kPiece) {
        std::string_view piece = bytes.substr(at, kPiece);
        g_checksum_update(context_->sum.get(), reinterpret_cast<const guchar*>(piece.data()),
                          static_cast<gssize>(piece.size()));
    }
    return *this;
}

std::string Digest::hex() { return g_checksum_get_string(context_->sum.get()); }

std::string sha256(std::string_view bytes) { return Digest().add(bytes).hex(); }

std::string readBytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error(path.string() + ": cannot be read (" + std::strerror(errno) + ")");
    std::string bytes;
    file.seekg(0, std::ios::end);
    auto size = file.tellg();
    if (size > 0) {
        bytes.resize(static_cast<std::size_t>(size));
        file.seekg(0);
        file.read(bytes.data(), size);
    }
    if (!file) throw std::runtime_error(path.string() + ": cannot be read");
    return bytes;
}

}  // namespace velmorant::review
