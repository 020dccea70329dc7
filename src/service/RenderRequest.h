#pragma once

#include <map>
#include <stdexcept>
#include <string>

namespace velmorant::service {

// Input the client got wrong: answered 400 with the message.
class BadRequest : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

enum class Product { CardPng, CardJson, WidgetPng };

// How to draw: the program's own options, from the query string.
struct RenderOptions {
    double width = 390;
    double scale = 3;
    std::string locale = "en_US";
    // IANA zone; empty uses the server's.
    std::string timeZone;
    // ISO 8601 in `timeZone`; empty is the current minute.
    std::string now;
};

// Reads `width`, `scale`, `locale`, `tz` and `now` as the program checks its
// options; throws BadRequest naming the parameter. Locale, zone and date are
// checked where the platform is made.
RenderOptions readRenderOptions(const std::map<std::string, std::string>& query);

// Where the stores come from, as bytes, so that the bytes can be fingerprinted
// before anything is parsed.
struct StoreInput {
    enum class Kind { Demo, Files, Body };
    Kind kind = Kind::Demo;
    // Files: the shared and standard store files as read (empty when missing).
    // Body: the request body in `shared`.
    std::string shared;
    std::string standard;
};

struct RenderTask {
    Product product = Product::CardPng;
    // The intent or the widget operation.
    std::string name;
    RenderOptions options;
    StoreInput stores;
};

}  // namespace velmorant::service
