#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velmorant::review {

// A decoded picture: straight (not premultiplied) RGBA, 8 bits a channel, rows top to bottom.
struct Picture {
    std::uint32_t width = 0, height = 0;
    std::vector<std::uint8_t> rgba;
};

// Decodes PNG bytes; throws BadInput naming `name` when they are not a whole PNG.
Picture decodePng(std::string_view bytes, const std::string& name);

// Encodes an RGBA picture as PNG bytes.
std::string encodePng(const Picture& picture);

}  // namespace velmorant::review
