#include "Routes.h"

#include "Rendering.h"

#include <algorithm>
#include <cctype>
#include <optional>

namespace velmorant::service {
namespace {

bool isName(std::string_view name) {
    return !name.empty() && std::all_of(name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c); });
}

Route notFound(std::string why) { return Route{RouteKind::NotFound, "", Product::CardPng, std::move(why)}; }

// "/PREFIX/NAME.EXT": the name when the path has that form.
std::optional<std::string_view> nameIn(std::string_view path, std::string_view prefix, std::string_view extension) {
    if (!path.starts_with(prefix) || !path.ends_with(extension)) return std::nullopt;
    std::string_view name = path.substr(prefix.size(), path.size() - prefix.size() - extension.size());
    if (!isName(name)) return std::nullopt;
    return name;
}

}  // namespace

bool Route::allows(const std::string& method) const {
    if (method == "GET" || method == "HEAD") return true;
    return method == "POST" && (kind == RouteKind::Snippet || kind == RouteKind::Widget);
}

std::string Route::allowHeader() const {
    return kind == RouteKind::Snippet || kind == RouteKind::Widget ? "GET, HEAD, POST" : "GET, HEAD";
}

Route matchRoute(const HttpRequest& request) {
    std::string_view path = request.path;
    if (request.rawPathSuspicious || path.find('\0') != std::string_view::npos) return notFound("the path holds characters no route uses");
    if (path == "/healthz") return {RouteKind::Health};
    if (path == "/metrics") return {RouteKind::Metrics};
    if (path == "/") return {RouteKind::Preview};
    if (path == "/v1/events") return {RouteKind::Events};
    if (path == "/v1/stores.json") return {RouteKind::Stores};
    for (auto [extension, product] : {std::pair{".png", Product::CardPng}, std::pair{".json", Product::CardJson}}) {
        if (auto name = nameIn(path, "/v1/snippets/", extension)) {
            if (!isKnownIntent(*name)) return notFound("no snippet for intent \"" + std::string(*name) + "\"");
            return {RouteKind::Snippet, std::string(*name), product};
        }
    }
    if (auto name = nameIn(path, "/v1/widgets/", ".png")) {
        if (!isKnownWidget(*name)) return notFound("no widget picture \"" + std::string(*name) + "\"");
        return {RouteKind::Widget, std::string(*name), Product::WidgetPng};
    }
    return notFound(std::string(path));
}

std::string_view routeName(RouteKind kind) {
    switch (kind) {
        case RouteKind::Health: return "healthz";
        case RouteKind::Metrics: return "metrics";
        case RouteKind::Preview: return "preview";
        case RouteKind::Events: return "events";
        case RouteKind::Stores: return "stores";
        case RouteKind::Snippet: return "snippets";
        case RouteKind::Widget: return "widgets";
        case RouteKind::NotFound: break;
    }
    return "unknown";
}

}  // namespace velmorant::service
