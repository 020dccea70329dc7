#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace velmorant::platform {

// One zlib-wrapped deflate stream (ISA-L's igzip), fed piece by piece: what
// it makes is handed on in pieces of at most `kPieceBytes`, so neither the
// input nor the output is ever held whole.
class DeflateStream {
public:
    static constexpr std::size_t kPieceBytes = 64 * 1024;
    // Takes a piece of compressed output; false stops the stream.
    using Output = std::function<bool(const std::uint8_t* bytes, std::size_t size)>;

    // `level` is igzip's, 0 (fastest) to 3.
    DeflateStream(int level, Output output);
    ~DeflateStream();
    DeflateStream(const DeflateStream&) = delete;
    DeflateStream& operator=(const DeflateStream&) = delete;

    // Compresses `size` bytes; `last` ends the stream and hands on the rest.
    // False, with the reason in `error()`, once anything failed.
    bool add(const std::uint8_t* bytes, std::size_t size, bool last);
    const std::string& error() const { return error_; }

private:
    bool fail(std::string why);
    bool handOn();

    struct State;
    std::unique_ptr<State> state_;
    Output output_;
    std::string error_;
};

}  // namespace velmorant::platform
