#include "SnippetCard.h"

#include "PicturesAhead.h"
#include "detail/ValueJson.h"

#include "intents/IntentViewController.h"
#include "platform/views/Accessibility.h"
#include "platform/store/PlistCodec.h"
#include "platform/views/ViewRenderer.h"

#include <span>
#include <stdexcept>

namespace velmorant::cli {
using intents::ExtensionContext;
using intents::IntentViewController;
using intents::Interaction;
using intents::InteractiveBehavior;
using intents::ParameterSet;
using intents::makeIntent;

namespace {

using json = nlohmann::json;

void fillStore(platform::PreferencesStore& store, const std::string& bytes, std::string_view which) {
    std::string error;
    auto document = platform::parsePlist(
        std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()), &error);
    if (!document) throw std::invalid_argument(std::string(which) + " store cannot be read: " + error);
    for (const auto& [key, value] : document->root) store.setObject(value, key);
}

// Lets the thread drawing a card's pictures ahead go, however the card ends,
// before the views it reads do.
class PicturesFinished {
public:
    explicit PicturesFinished(PicturesAhead* pictures) : pictures_(pictures) {}
    ~PicturesFinished() {
        if (pictures_) pictures_->finish();
    }
    PicturesFinished(const PicturesFinished&) = delete;
    PicturesFinished& operator=(const PicturesFinished&) = delete;

private:
    PicturesAhead* pictures_;
};

}  // namespace

SnippetCard showSnippet(platform::Platform& platform, std::string_view intent, const SnippetOptions& options) {
    ExtensionContext context;
    context.hostedViewMaximumAllowedSize = {options.width, 420};
    IntentViewController controller(platform, context);
    const PicturesFinished picturesFinished(options.picturesAhead);
    controller.viewDidLoad();
    Interaction interaction{makeIntent(intent)};
    SnippetCard card;
    bool success = false;
    controller.configureViewForParameters({}, interaction, InteractiveBehavior::None, &controller.extensionContext(),
                                          [&](bool ok, const ParameterSet&, platform::Size size) {
                                              success = ok;
                                              card.size = size;
                                          });
    json views = json::object();
    for (const std::string& name : IntentViewController::outletNames())
        views[name] = viewToJson(*controller.views().view(name), options.images);
    platform::SpeechLanguage language{[&](std::string_view key) { return platform.localizedString(key); },
                                      platform.localeId()};
    card.spoken = platform::accessibilityText(controller.views(), language);
    if (options.draw) options.draw(controller.views(), card);
    std::string error;
    if (!options.pngFile.empty()) {
        const platform::FontSystem& fonts =
            options.picturesAhead ? options.picturesAhead->draw(controller.views()) : platform.fonts();
        if (!platform::writeCardPng(controller.views(), card.size, platform.screenScale(), fonts, options.pngFile,
                                    card.spoken, &error))
            throw std::runtime_error("cannot write " + options.pngFile.string() + ": " + error);
    }
    if (options.pngInMemory) {
        card.png = platform::encodeCardPng(controller.views(), card.size, platform.screenScale(), platform.fonts(),
                                           card.spoken, &error);
        if (card.png.empty()) throw std::runtime_error("cannot draw the card: " + error);
    }
    json record = {{"success", success},
                   {"size", {{"width", number(card.size.width, false)}, {"height", number(card.size.height, false)}}},
                   {"views", views},
                   {"accessibility", card.spoken}};
    card.record = record.dump(1);
    return card;
}

CardRenderer::CardRenderer(double scale, std::filesystem::path resourceDir)
    : scale_(scale), resourceDir_(std::move(resourceDir)), shared_(std::make_shared<platform::SharedResources>()) {
    if (!(scale > 0 && scale <= 16)) throw std::invalid_argument("scale must be between 0 and 16 pixels per point");
}

Card CardRenderer::render(const CardRequest& request) {
    platform::PlatformOptions options;
    options.now = request.now;
    options.timeZoneId = request.timeZoneId;
    options.localeId = request.localeId;
    options.scale = scale_;
    options.preferencesDir = request.preferencesDir;
    options.resourceDir = resourceDir_;
    options.shared = shared_;
    platform::Platform platform(std::move(options));
    // One instant for the whole card, as the program uses.
    platform.setNow(platform.now());
    if (request.preferencesDir.empty()) {
        if (request.sharedStore) fillStore(*platform.suiteNamed(platform::kAppGroupSuite), *request.sharedStore, "shared");
        if (request.standardStore) fillStore(*platform.standardUserDefaults(), *request.standardStore, "standard");
    }
    SnippetCard card = showSnippet(platform, request.intent, {.width = request.width, .pngInMemory = request.png});
    return {std::move(card.record), std::move(card.png)};
}

}  // namespace velmorant::cli
