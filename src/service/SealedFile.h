#pragma once

#include <string_view>

namespace velmorant::service {

// An anonymous in-memory file holding `bytes`, sealed so that nothing can
// change, grow or shrink it: every reader sees the same bytes for as long as
// the descriptor lives. The caller owns the descriptor; -1 when the system
// refuses one (out of descriptors or memory), and the caller keeps the bytes
// in memory instead.
int sealedFileOf(std::string_view bytes);

}  // namespace velmorant::service
