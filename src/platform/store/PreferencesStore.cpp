#include "platform/store/PreferencesStore.h"

namespace velmorant::platform {

Value MemoryPreferencesStore::objectForKey(std::string_view key) {
    const Value* value = contents_.objectForKey(key);
    return value ? *value : Value();
}

bool MemoryPreferencesStore::setObject(const Value& value, std::string_view key) {
    contents_.setObject(value, key);
    return true;
}

bool MemoryPreferencesStore::removeObjectForKey(std::string_view key) {
    contents_.removeObjectForKey(key);
    return true;
}

}  // namespace velmorant::platform
