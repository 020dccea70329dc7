#pragma once

#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <string_view>

namespace velmorant::platform {

// Where the platform layer tells the user about damaged or unwritable files.
// Each distinct message is reported once, so a store read on every request
// does not flood the output.
class Diagnostics {
public:
    using Sink = std::function<void(std::string_view)>;

    Diagnostics();  // reports to standard error
    explicit Diagnostics(Sink sink) : sink_(std::move(sink)) {}

    void report(const std::string& message);
    // Forget what was reported, so a problem that comes back is told again.
    void forget(const std::string& message);

private:
    Sink sink_;
    std::mutex mutex_;
    std::set<std::string> reported_;
};

}  // namespace velmorant::platform
