#pragma once

#include <unistd.h>

#include <utility>

namespace velmorant::platform {

// Owns a POSIX file descriptor and closes it once; -1 is none.
class FileDescriptor {
public:
    explicit FileDescriptor(int fd = -1) : fd_(fd) {}
    ~FileDescriptor() {
        if (fd_ >= 0) ::close(fd_);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    // The descriptor, still owned; -1 for none.
    int get() const { return fd_; }
    // The descriptor, no longer owned.
    int release() { return std::exchange(fd_, -1); }
    // Closes now; false when the kernel says the data may not have been written.
    [[nodiscard]] bool close() {
        int fd = release();
        return fd < 0 || ::close(fd) == 0;
    }

private:
    int fd_;
};

}  // namespace velmorant::platform
