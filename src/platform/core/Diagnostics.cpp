#include "platform/core/Diagnostics.h"

#include <iostream>

namespace velmorant::platform {

Diagnostics::Diagnostics()
    : sink_([](std::string_view message) { std::cerr << "velmorant: " << message << '\n'; }) {}

void Diagnostics::report(const std::string& message) {
    {
        std::lock_guard lock(mutex_);
        if (!reported_.insert(message).second) return;
    }
    if (sink_) sink_(message);
}

void Diagnostics::forget(const std::string& message) {
    std::lock_guard lock(mutex_);
    reported_.erase(message);
}

}  // namespace velmorant::platform
