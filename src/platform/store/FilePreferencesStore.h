#pragma once

#include "platform/core/Diagnostics.h"
#include "platform/store/PlistCodec.h"
#include "platform/store/PreferencesStore.h"

#include <sys/stat.h>
#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <optional>

namespace velmorant::platform {

// A preferences store kept in a property-list file (binary or XML) that other
// programs, the main app first of all, read and write too.
//
// Reads always see the file as it is now (it is parsed again whenever it
// changed). Every write is a read-modify-write of the current file under an
// exclusive flock on "FILE.lock" beside it, replaced atomically by rename, so
// a key another writer put there is never lost; the file keeps its format,
// permissions and owner. A file that cannot be parsed is reported once, reads
// as empty and is never overwritten; a read-only file is not written either.
class FilePreferencesStore final : public PreferencesStore {
public:
    FilePreferencesStore(std::filesystem::path file, Diagnostics& diagnostics);

    Value objectForKey(std::string_view key) override;
    bool setObject(const Value& value, std::string_view key) override;
    bool removeObjectForKey(std::string_view key) override;
    Dictionary dictionaryRepresentation() override;

    const std::filesystem::path& file() const { return file_; }
    std::filesystem::path lockFile() const;

    // Applies `change` to the current contents under the lock and writes the
    // result; false when the file could not be read or written (reported).
    [[nodiscard]] bool modify(const std::function<void(Dictionary&)>& change);

private:
    struct Stamp {
        dev_t device = 0;
        ino_t inode = 0;
        off_t size = -1;
        long long mtimeNs = 0;
        bool operator==(const Stamp&) const = default;
    };
    struct Loaded {
        PlistDocument document;
        bool readable = true;
        std::optional<struct stat> fileStat;  // of the file read; none when there is none
    };
    // The file's contents now; an absent file is an empty binary store.
    // Parsed again only when the file changed.
    const Loaded& load();
    [[nodiscard]] bool write(const PlistDocument& document, const struct stat* existing);
    void problem(const std::string& what);

    std::filesystem::path file_;
    Diagnostics& diagnostics_;
    std::optional<Stamp> cachedStamp_;
    Loaded cached_;
};

}  // namespace velmorant::platform
