#include "intents/HandleLightsOff.h"
#include "intents/WatchMetrics.h"
#include "platform/FilePreferencesStore.h"

#include "SnippetStores.h"

#include <gtest/gtest.h>

#include <vector>

using namespace velmorant;
using namespace velmorant::testing;

namespace {

struct TurnLightsOffCase {
    const char* locale;
    const char* status;
    const char* response;
};

// The switch goes into the store file itself; every other key, written by
// another process, must be there unchanged afterwards.
TEST(HandleLightsOff, WritesTheSwitchIntoTheStoreFileAndKeepsEveryOtherKey) {
    const TurnLightsOffCase cases[] = {
        {"en_US", "\U0001F4A4 In bed at 7:30 AM.\nOpen app to cancel.", "Good Night"},
        {"de_DE", "\U0001F4A4 Im Bett seit 07:30.\nZum Abbrechen die App \u00F6ffnen.", "Gute Nacht"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.locale);
        SnippetFiles files;
        const Dictionary before = sharedStore(kTonight);
        files.write(before);
        auto platform = files.platform(c.locale);
        HandleLightsOff handler(*platform);
        Dictionary texts = handler.turnLightsOff();
        EXPECT_EQ(texts, (Dictionary{{"statusLabel", c.status}, {"response", c.response}}));

        platform::Diagnostics quiet;
        platform::FilePreferencesStore reread(files.sharedFile(), quiet);
        Dictionary after = reread.dictionaryRepresentation();
        EXPECT_EQ(after.objectForKey("activeLightSwitch")->date(), kMorning);
        after.removeObjectForKey("activeLightSwitch");
        EXPECT_EQ(after, before);
    }
}

// A watch link whose pairing, installation and activation outcome a test sets.
class FakeWatchSession final : public platform::WatchSession, public platform::WatchConnectivity {
public:
    bool supported = true;
    bool paired = true;
    bool installed = true;
    std::optional<std::string> activationError;
    std::optional<std::string> sendError;
    platform::WatchSessionDelegate* delegate = nullptr;
    int activations = 0;
    std::vector<Dictionary> sent;

    bool isSupported() const override { return supported; }
    platform::WatchSession* defaultSession() override { return supported ? this : nullptr; }
    bool isPaired() const override { return paired; }
    bool isWatchAppInstalled() const override { return installed; }
    void setDelegate(platform::WatchSessionDelegate* d) override { delegate = d; }
    void activateSession() override {
        ++activations;
        delegate->session(*this, activationError ? platform::WatchActivationState::NotActivated
                                                 : platform::WatchActivationState::Activated,
                          activationError);
    }
    bool updateApplicationContext(const Dictionary& context, std::string* error) override {
        sent.push_back(context);
        if (sendError && error) *error = *sendError;
        return !sendError;
    }
};

struct WatchCase {
    const char* name;
    bool supported, paired, installed;
    std::optional<std::string> activationError;
    std::optional<std::string> sendError;
    int activations;
    bool sent;
};

TEST(WatchMetrics, SendsTheContextOnlyToAnActivePairedWatchWithTheAppInstalled) {
    const WatchCase cases[] = {
        {"paired and installed", true, true, true, std::nullopt, std::nullopt, 1, true},
        {"a failed send is dropped", true, true, true, std::nullopt, "not reachable", 1, true},
        {"app not installed", true, true, false, std::nullopt, std::nullopt, 1, false},
        {"not paired", true, false, true, std::nullopt, std::nullopt, 1, false},
        {"activation failed", true, true, true, "activation failed", std::nullopt, 1, false},
        {"no watch support", false, true, true, std::nullopt, std::nullopt, 0, false},
    };
    const Dictionary context{{"bankPercentage", 0.95}, {"sleepTimeLabel", "7h 36m"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        FakeWatchSession watch;
        watch.supported = c.supported;
        watch.paired = c.paired;
        watch.installed = c.installed;
        watch.activationError = c.activationError;
        watch.sendError = c.sendError;
        WatchMetrics metrics(watch);
        metrics.updateWatchContextWithDict(context);
        EXPECT_EQ(metrics.contextDict(), context);
        EXPECT_EQ(watch.activations, c.activations);
        EXPECT_EQ(watch.delegate, c.supported ? &metrics : nullptr);
        EXPECT_EQ(watch.sent, c.sent ? std::vector<Dictionary>{context} : std::vector<Dictionary>{});
    }
}

TEST(WatchMetrics, OnThisPlatformTheContextIsOnlyKept) {
    platform::NoWatchConnectivity none;
    WatchMetrics metrics(none);
    metrics.updateWatchContextWithDict({{"a", 1}});
    metrics.performUpdateWatchContext();
    EXPECT_EQ(metrics.contextDict(), (Dictionary{{"a", 1}}));
    EXPECT_EQ(metrics.delegate(), nullptr);
}

}  // namespace
