#include "PreviewPage.h"

#include "platform/services/Platform.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace velmorant::service {

std::string previewPage() {
    platform::Platform platform;
    auto file = platform.resourceDir() / "service" / "preview.html";
    std::ifstream in(file, std::ios::binary);
    if (!in) throw std::runtime_error("cannot read the preview page " + file.string());
    return std::string(std::istreambuf_iterator<char>(in), {});
}

}  // namespace velmorant::service
