#include "platform/store/FilePreferencesStore.h"

#include "platform/core/FileDescriptor.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>

namespace velmorant::platform {
namespace {

std::string systemError() { return std::strerror(errno); }

// The file's bytes, or none (saying why) when it holds more than `limit`:
// what is read is bounded, whatever its size was said to be.
std::optional<std::vector<std::uint8_t>> readAtMost(int fd, std::size_t limit, std::string* error) {
    std::vector<std::uint8_t> bytes;
    std::uint8_t chunk[64 * 1024];
    for (;;) {
        ssize_t n = ::read(fd, chunk, sizeof chunk);
        if (n < 0) {
            if (errno == EINTR) continue;
            *error = "it cannot be read (" + systemError() + ")";
            return std::nullopt;
        }
        if (n == 0) return bytes;
        if (bytes.size() + static_cast<std::size_t>(n) > limit) {
            *error = "it is larger than the largest store accepted (" + std::to_string(limit >> 20) + " MiB)";
            return std::nullopt;
        }
        bytes.insert(bytes.end(), chunk, chunk + n);
    }
}

bool writeAll(int fd, const std::vector<std::uint8_t>& bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        done += static_cast<std::size_t>(n);
    }
    return true;
}

}  // namespace

FilePreferencesStore::FilePreferencesStore(std::filesystem::path file, Diagnostics& diagnostics)
    : file_(std::move(file)), diagnostics_(diagnostics) {}

std::filesystem::path FilePreferencesStore::lockFile() const { return file_.string() + ".lock"; }

void FilePreferencesStore::problem(const std::string& what) { diagnostics_.report(file_.string() + ": " + what); }

const FilePreferencesStore::Loaded& FilePreferencesStore::load() {
    // One descriptor for looking at the file and reading it: by name, the
    // file looked at could be replaced before it is read. Opened without
    // blocking, so a FIFO in the store's place cannot hang the reader.
    FileDescriptor fd(::open(file_.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    struct stat st {};
    if (fd.get() < 0 || ::fstat(fd.get(), &st) != 0) {
        cachedStamp_.reset();
        const bool absent = fd.get() < 0 && errno == ENOENT;
        if (!absent) problem("cannot be read (" + systemError() + "); it is treated as empty");
        cached_ = Loaded{{}, absent, std::nullopt};
        return cached_;
    }
    Stamp stamp{st.st_dev, st.st_ino, st.st_size, st.st_mtim.tv_sec * 1000000000LL + st.st_mtim.tv_nsec};
    if (cachedStamp_ && *cachedStamp_ == stamp) return cached_;

    Loaded loaded{{}, true, st};
    std::string error;
    std::optional<PlistDocument> document;
    if (!S_ISREG(st.st_mode)) {
        error = "it is not a regular file";
    } else if (auto bytes = readAtMost(fd.get(), kMaxPlistBytes, &error)) {
        document = parsePlist(*bytes, &error);
    }
    if (document) {
        loaded.document = std::move(*document);
    } else {
        loaded.readable = false;
        problem("is not a readable preferences file: " + error +
                "; it is treated as empty and will not be overwritten");
    }
    cachedStamp_ = stamp;
    cached_ = std::move(loaded);
    return cached_;
}

Value FilePreferencesStore::objectForKey(std::string_view key) {
    const Value* v = load().document.root.objectForKey(key);
    return v ? *v : Value();
}

Dictionary FilePreferencesStore::dictionaryRepresentation() { return load().document.root; }

bool FilePreferencesStore::setObject(const Value& value, std::string_view key) {
    return modify([&](Dictionary& d) { d.setObject(value, key); });
}

bool FilePreferencesStore::removeObjectForKey(std::string_view key) {
    return modify([&](Dictionary& d) { d.removeObjectForKey(key); });
}

bool FilePreferencesStore::modify(const std::function<void(Dictionary&)>& change) {
    FileDescriptor lock(::open(lockFile().c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644));
    if (lock.get() < 0) {
        problem("cannot take the lock " + lockFile().string() + " (" + systemError() + "); nothing was written");
        return false;
    }
    while (::flock(lock.get(), LOCK_EX) != 0) {
        if (errno != EINTR) {
            problem("cannot take the lock (" + systemError() + "); nothing was written");
            return false;
        }
    }
    // Under the lock, read what is there now: another writer may have changed it.
    cachedStamp_.reset();
    const Loaded& current = load();
    if (!current.readable) return false;  // already reported; never overwrite what we cannot read

    const std::optional<struct stat>& existing = current.fileStat;
    if (existing && (existing->st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0) {
        problem("is read-only; nothing was written");
        return false;
    }
    PlistDocument next = current.document;
    change(next.root);
    if (next.root == current.document.root) return true;
    return write(next, existing ? &*existing : nullptr);
}

bool FilePreferencesStore::write(const PlistDocument& document, const struct stat* existing) {
    std::string error;
    auto bytes = serialisePlist(document.root, document.format, &error);
    if (!bytes) {
        problem("was not written: " + error);
        return false;
    }
    std::string tempName = (file_.parent_path() / ("." + file_.filename().string() + ".XXXXXX")).string();
    FileDescriptor temp(::mkstemp(tempName.data()));
    if (temp.get() < 0) {
        problem("was not written: cannot create a file beside it (" + systemError() + ")");
        return false;
    }
    auto abandon = [&](const std::string& why) {
        ::unlink(tempName.c_str());
        problem("was not written (" + why + "); the file is unchanged");
        return false;
    };
    mode_t mode = existing ? (existing->st_mode & 07777) : 0600;
    if (::fchmod(temp.get(), mode) != 0) return abandon(systemError());
    if (existing && (existing->st_uid != ::geteuid() || existing->st_gid != ::getegid())) {
        [[maybe_unused]] int ignored = ::fchown(temp.get(), existing->st_uid, existing->st_gid);
    }
    if (!writeAll(temp.get(), *bytes) || ::fsync(temp.get()) != 0) return abandon(systemError());
    if (::close(temp.release()) != 0) return abandon(systemError());
    if (::rename(tempName.c_str(), file_.c_str()) != 0) return abandon(systemError());
    FileDescriptor dir(::open(file_.parent_path().empty() ? "." : file_.parent_path().c_str(), O_RDONLY | O_DIRECTORY));
    if (dir.get() >= 0) ::fsync(dir.get());
    return true;
}

}  // namespace velmorant::platform
