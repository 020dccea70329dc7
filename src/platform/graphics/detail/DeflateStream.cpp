#include "platform/graphics/detail/DeflateStream.h"

#include <isa-l/igzip_lib.h>

#include <memory>

namespace velmorant::platform {
namespace {

// igzip's token buffer for each level: the size it suggests as its default.
std::size_t levelBufferSize(int level) {
    switch (level) {
        case 1: return ISAL_DEF_LVL1_DEFAULT;
        case 2: return ISAL_DEF_LVL2_DEFAULT;
        case 3: return ISAL_DEF_LVL3_DEFAULT;
        default: return 0;
    }
}

}  // namespace

struct DeflateStream::State {
    isal_zstream stream;  // large (about 80 KB): why the state lives on the heap
    std::unique_ptr<std::uint8_t[]> levelBuffer;
    std::unique_ptr<std::uint8_t[]> piece = std::make_unique_for_overwrite<std::uint8_t[]>(kPieceBytes);
    bool ended = false;
};

DeflateStream::DeflateStream(int level, Output output) : state_(std::make_unique<State>()), output_(std::move(output)) {
    isal_zstream& s = state_->stream;
    isal_deflate_init(&s);
    if (level < ISAL_DEF_MIN_LEVEL || level > ISAL_DEF_MAX_LEVEL) {
        fail("compression level " + std::to_string(level) + " is not between " + std::to_string(ISAL_DEF_MIN_LEVEL) +
             " and " + std::to_string(ISAL_DEF_MAX_LEVEL));
        return;
    }
    s.level = static_cast<std::uint32_t>(level);
    if (std::size_t size = levelBufferSize(level)) {
        state_->levelBuffer = std::make_unique_for_overwrite<std::uint8_t[]>(size);
        s.level_buf = state_->levelBuffer.get();
        s.level_buf_size = static_cast<std::uint32_t>(size);
    }
    s.gzip_flag = IGZIP_ZLIB;
    s.flush = NO_FLUSH;
    s.next_out = state_->piece.get();
    s.avail_out = kPieceBytes;
}

DeflateStream::~DeflateStream() = default;

bool DeflateStream::fail(std::string why) {
    if (error_.empty()) error_ = std::move(why);
    return false;
}

bool DeflateStream::handOn() {
    isal_zstream& s = state_->stream;
    std::size_t made = kPieceBytes - s.avail_out;
    s.next_out = state_->piece.get();
    s.avail_out = kPieceBytes;
    return made == 0 || output_(state_->piece.get(), made) || fail("the compressed data could not be written");
}

bool DeflateStream::add(const std::uint8_t* bytes, std::size_t size, bool last) {
    if (!error_.empty()) return false;
    if (state_->ended) return fail("data after the end of the compressed stream");
    isal_zstream& s = state_->stream;
    s.next_in = const_cast<std::uint8_t*>(bytes);  // igzip only reads it
    s.avail_in = static_cast<std::uint32_t>(size);
    s.end_of_stream = last;
    // Without an end, igzip keeps what it cannot yet use: the loop ends once
    // the input is taken; with one, once the stream is complete.
    while (true) {
        if (int e = isal_deflate(&s); e != COMP_OK) return fail("igzip failed to compress (error " + std::to_string(e) + ")");
        bool done = s.avail_in == 0 && (!last || s.internal_state.state == ZSTATE_END);
        if (s.avail_out == 0 || (done && last))
            if (!handOn()) return false;
        if (done) break;
    }
    state_->ended = last;
    return true;
}

}  // namespace velmorant::platform
