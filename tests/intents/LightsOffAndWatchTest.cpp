#include "intents/HandleLightsOff.h"
#include "intents/WatchMetrics.h"
#include "platform/store/FilePreferencesStore.h"

#include "SnippetStores.h"

#include <gtest/gtest.h>

#include <vector>

using namespace velmorant;
using intents::HandleLightsOff;
using intents::WatchMetrics;
using namespace velmorant::testing;

namespace {

// The switch goes into the store file itself, a later one replacing the earlier;
// every other key, written by another process, must be there unchanged afterwards.
TEST(HandleLightsOff, WritesTheSwitchIntoTheStoreFileAndKeepsEveryOtherKey) {
    const struct { const char* locale; const char* status; const char* response; } cases[] = {
        {"en_US", "\U0001F4A4 In bed at 7:30 AM.\nOpen app to cancel.", "Good Night"},
        {"de_DE", "\U0001F4A4 Im Bett seit 07:30.\nZum Abbrechen die App \u00F6ffnen.", "Gute Nacht"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.locale);
        SnippetFiles files;
        const Dictionary before = sharedStore(kTonight);
        files.write(before);
        auto platform = files.platform(c.locale, kNightStart);
        HandleLightsOff handler(*platform);
        handler.turnLightsOff();
        platform->setNow(kMorning);
        EXPECT_EQ(handler.turnLightsOff(), (Dictionary{{"statusLabel", c.status}, {"response", c.response}}));

        platform::Diagnostics quiet;
        Dictionary after = platform::FilePreferencesStore(files.sharedFile(), quiet).dictionaryRepresentation();
        EXPECT_EQ(after.objectForKey("activeLightSwitch")->date(), kMorning);
        after.removeObjectForKey("activeLightSwitch");
        EXPECT_EQ(after, before);
    }
}

// A paired watch link whose installation and activation outcome a test sets.
class FakeWatchSession final : public platform::WatchSession, public platform::WatchConnectivity {
public:
    FakeWatchSession(bool installed, std::optional<std::string> activationError)
        : installed(installed), activationError(std::move(activationError)) {}
    bool installed;
    std::optional<std::string> activationError;
    platform::WatchSessionDelegate* delegate = nullptr;
    std::vector<Dictionary> sent;

    bool isSupported() const override { return true; }
    platform::WatchSession* defaultSession() override { return this; }
    bool isPaired() const override { return true; }
    bool isWatchAppInstalled() const override { return installed; }
    void setDelegate(platform::WatchSessionDelegate* d) override { delegate = d; }
    void activateSession() override {
        delegate->session(*this, activationError ? platform::WatchActivationState::NotActivated
                                                 : platform::WatchActivationState::Activated,
                          activationError);
    }
    bool updateApplicationContext(const Dictionary& context, std::string*) override {
        sent.push_back(context);
        return true;
    }
};

TEST(WatchMetrics, SendsTheContextOnlyToAnActivePairedWatchWithTheAppInstalled) {
    const struct { const char* name; bool installed; std::optional<std::string> activationError; bool sent; } cases[] = {
        {"paired and installed", true, std::nullopt, true},
        {"app not installed", false, std::nullopt, false},
        {"activation failed", true, "activation failed", false},
    };
    const Dictionary context{{"bankPercentage", 0.95}, {"sleepTimeLabel", "7h 36m"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        FakeWatchSession watch(c.installed, c.activationError);
        WatchMetrics metrics(watch);
        metrics.updateWatchContextWithDict(context);
        EXPECT_EQ(metrics.contextDict(), context);
        EXPECT_EQ(watch.sent, c.sent ? std::vector<Dictionary>{context} : std::vector<Dictionary>{});
    }
}

}  // namespace
