#pragma once

#include "Http.h"
#include "RenderRequest.h"

#include <string>
#include <string_view>

namespace velmorant::service {

enum class RouteKind { Health, Metrics, Preview, Events, Stores, Snippet, Widget, NotFound };

struct Route {
    RouteKind kind = RouteKind::NotFound;
    // Snippet: the intent; Widget: the operation.
    std::string name;
    Product product = Product::CardPng;
    // NotFound: what did not match.
    std::string why;

    bool allows(const std::string& method) const;
    std::string allowHeader() const;
};

// Matches the path exactly against the known routes, names included; a raw
// target with escapes, NULs or other odd bytes matches nothing, so no trick
// in the path reaches a name (and no name ever reaches the file system).
Route matchRoute(const HttpRequest& request);

// The route's label in the metrics.
std::string_view routeName(RouteKind kind);

}  // namespace velmorant::service
