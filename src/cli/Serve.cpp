#include "Serve.h"

#include "Arguments.h"
#include "service/Service.h"

#include <charconv>

namespace velmorant::cli {
namespace {

unsigned long wholeNumberWithin(const std::string& option, const std::string& text, unsigned long low, unsigned long high) {
    unsigned long value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value < low || value > high)
        throw UsageError(option + " must be a whole number from " + std::to_string(low) + " to " + std::to_string(high) +
                         ", not \"" + text + "\"");
    return value;
}

}  // namespace

int runServe(const std::map<std::string, std::string>& options, const std::vector<std::string>& positional,
             std::ostream& out) {
    if (!positional.empty()) throw UsageError("serve takes no arguments, not \"" + positional[0] + "\"");
    service::ServiceOptions settings;
    for (const auto& [name, value] : options) {
        if (name == "--port") settings.port = static_cast<std::uint16_t>(wholeNumberWithin(name, value, 0, 65535));
        else if (name == "--bind") settings.bind = value;
        else if (name == "--prefs") settings.prefs = value;
        else if (name == "--workers") settings.workers = wholeNumberWithin(name, value, 1, 256);
        else if (name == "--body-memory") settings.limits.maxBodyBytesInFlight = wholeNumberWithin(name, value, 1, 4096) << 20;
    }
    try {
        service::runUntilSignalled(settings, out);
    } catch (const std::runtime_error& e) {
        throw UsageError(e.what());
    }
    return 0;
}

}  // namespace velmorant::cli
