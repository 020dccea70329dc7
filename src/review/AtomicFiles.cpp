#include "AtomicFiles.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

namespace velmorant::review {
namespace {

namespace fs = std::filesystem;

std::runtime_error failure(const std::string& what) { return std::runtime_error(what + ": " + std::strerror(errno)); }

// Removes a path when it goes out of scope, unless released.
class Leftover {
public:
    explicit Leftover(fs::path path) : path_(std::move(path)) {}
    ~Leftover() {
        std::error_code ec;
        if (!path_.empty()) fs::remove_all(path_, ec);
    }
    Leftover(const Leftover&) = delete;
    Leftover& operator=(const Leftover&) = delete;
    void release() { path_.clear(); }

private:
    fs::path path_;
};

mode_t defaultMode(mode_t full) {
    mode_t mask = ::umask(0);
    ::umask(mask);
    return full & ~mask;
}

}  // namespace

void writeFileAtomically(const fs::path& path, std::string_view bytes) {
    std::string pattern = (path.parent_path() / ("." + path.filename().string() + ".tmp-XXXXXX")).string();
    int fd = ::mkstemp(pattern.data());
    if (fd < 0) throw failure("cannot write " + path.string());
    Leftover temporary(pattern);
    std::size_t written = 0;
    while (written < bytes.size()) {
        ssize_t n = ::write(fd, bytes.data() + written, bytes.size() - written);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            ::close(fd);
            throw failure("cannot write " + path.string());
        }
        written += static_cast<std::size_t>(n);
    }
    ::fchmod(fd, defaultMode(0666));
    if (::close(fd) != 0 || ::rename(pattern.c_str(), path.c_str()) != 0) throw failure("cannot write " + path.string());
    temporary.release();
}

void replaceFolder(const fs::path& target, const std::function<void(const fs::path&)>& fill) {
    std::string pattern = (target.parent_path() / ("." + target.filename().string() + ".tmp-XXXXXX")).string();
    if (!::mkdtemp(pattern.data())) throw failure("cannot create a folder beside " + target.string());
    Leftover staging(pattern);
    ::chmod(pattern.c_str(), defaultMode(0777));
    fill(pattern);
    if (::renameat2(AT_FDCWD, pattern.c_str(), AT_FDCWD, target.c_str(), RENAME_EXCHANGE) == 0) return;  // staging now holds the old
    if (errno != EINVAL && errno != ENOSYS) throw failure("cannot replace " + target.string());
    // File systems that cannot exchange: the old folder steps aside first.
    fs::path aside = pattern + "-old";
    if (::rename(target.c_str(), aside.c_str()) != 0) throw failure("cannot replace " + target.string());
    Leftover old(aside);
    if (::rename(pattern.c_str(), target.c_str()) != 0) {
        int saved = errno;
        ::rename(aside.c_str(), target.c_str());
        old.release();
        errno = saved;
        throw failure("cannot replace " + target.string());
    }
}

}  // namespace velmorant::review
