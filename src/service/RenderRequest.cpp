#include "RenderRequest.h"

#include "cli/Arguments.h"

namespace velmorant::service {
namespace {

// The program's messages name its options (--width); here they are query parameters.
std::string asParameter(std::string message) {
    for (std::string_view option : {"--width", "--scale"}) {
        for (auto at = message.find(option); at != std::string::npos; at = message.find(option))
            message.replace(at, option.size(), option.substr(2));
    }
    return message;
}

}  // namespace

RenderOptions readRenderOptions(const std::map<std::string, std::string>& query) {
    RenderOptions options;
    try {
        for (const auto& [name, value] : query) {
            if (name == "width") options.width = cli::readWidth(value);
            else if (name == "scale") options.scale = cli::readScale(value);
            else if (name == "locale") options.locale = value;
            else if (name == "tz") options.timeZone = value;
            else if (name == "now") options.now = value;
            else throw BadRequest("unknown query parameter \"" + name + "\" (known: width, scale, locale, tz, now)");
        }
        cli::checkPictureSize(options.width, options.scale);
    } catch (const cli::UsageError& e) {
        throw BadRequest(asParameter(e.what()));
    }
    if (options.locale.empty()) throw BadRequest("locale must not be empty");
    return options;
}

}  // namespace velmorant::service
