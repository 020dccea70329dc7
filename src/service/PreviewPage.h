#pragma once

#include <string>

namespace velmorant::service {

// The live preview page (resources/service/preview.html): markup, style and
// script in one file, so it needs no network. Throws std::runtime_error when
// it cannot be read.
std::string previewPage();

}  // namespace velmorant::service
