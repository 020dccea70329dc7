#include "Digest.h"

#include <openssl/evp.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace velmorant::review {

struct Digest::Context {
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> ctx{EVP_MD_CTX_new(), &EVP_MD_CTX_free};
};

Digest::Digest() : context_(std::make_unique<Context>()) {
    if (!context_->ctx || EVP_DigestInit_ex(context_->ctx.get(), EVP_sha256(), nullptr) != 1)
        throw std::runtime_error("SHA-256 is not available");
}

Digest::~Digest() = default;

Digest& Digest::add(std::string_view bytes) {
    EVP_DigestUpdate(context_->ctx.get(), bytes.data(), bytes.size());
    return *this;
}

std::string Digest::hex() {
    unsigned char sum[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    EVP_DigestFinal_ex(context_->ctx.get(), sum, &length);
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (unsigned int i = 0; i < length; ++i) text += {kDigits[sum[i] >> 4], kDigits[sum[i] & 15]};
    return text;
}

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
