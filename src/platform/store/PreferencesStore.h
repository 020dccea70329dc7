#pragma once

#include "platform/core/Value.h"

#include <memory>
#include <string_view>

namespace velmorant::platform {

// The phone's preferences store (standard or app-group suite): a string-keyed
// map of property-list values. A missing key reads as none. Writes never throw;
// a write that could not be made is reported through the platform diagnostics
// and returns false.
class PreferencesStore {
public:
    virtual ~PreferencesStore() = default;

    virtual Value objectForKey(std::string_view key) = 0;
    // Setting none removes the key.
    virtual bool setObject(const Value& value, std::string_view key) = 0;
    virtual bool removeObjectForKey(std::string_view key) = 0;
    // Every write is already durable; kept for callers that flush explicitly.
    virtual bool synchronize() { return true; }
    // Everything the store holds now.
    virtual Dictionary dictionaryRepresentation() = 0;

    bool boolForKey(std::string_view key) { return objectForKey(key).boolValue(); }
};

// A store in memory: tests and the built-in demo data.
class MemoryPreferencesStore final : public PreferencesStore {
public:
    MemoryPreferencesStore() = default;
    explicit MemoryPreferencesStore(Dictionary contents) : contents_(std::move(contents)) {}

    Value objectForKey(std::string_view key) override;
    bool setObject(const Value& value, std::string_view key) override;
    bool removeObjectForKey(std::string_view key) override;
    Dictionary dictionaryRepresentation() override { return contents_; }

private:
    Dictionary contents_;
};

}  // namespace velmorant::platform
