#include "SealedFile.h"

#include "platform/core/FileDescriptor.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>

namespace velmorant::service {

int sealedFileOf(std::string_view bytes) {
    platform::FileDescriptor file(::memfd_create("velmorant-answer", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (file.get() < 0) return -1;
    std::size_t written = 0;
    while (written < bytes.size()) {
        ssize_t n = ::write(file.get(), bytes.data() + written, bytes.size() - written);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return -1;
        written += static_cast<std::size_t>(n);
    }
    if (::fcntl(file.get(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL) != 0)
        return -1;
    return file.release();
}

}  // namespace velmorant::service
