#include "WatchMetrics.h"

namespace velmorant::intents {

void WatchMetrics::updateWatchContextWithDict(const platform::Dictionary& dict) {
    contextDict_ = dict;
    if (!connectivity_.isSupported()) return;
    platform::WatchSession* session = connectivity_.defaultSession();
    if (!session) return;
    session->setDelegate(this);
    session->activateSession();
}

void WatchMetrics::session(platform::WatchSession&, platform::WatchActivationState,
                           const std::optional<std::string>& error) {
    if (!error) performUpdateWatchContext();
}

void WatchMetrics::sessionDidBecomeInactive(platform::WatchSession&) {}

void WatchMetrics::sessionDidDeactivate(platform::WatchSession&) {}

void WatchMetrics::performUpdateWatchContext() {
    platform::WatchSession* session = connectivity_.defaultSession();
    if (!session || !session->isPaired() || !session->isWatchAppInstalled()) return;
    // The watch picks the context up when it next can; a failed send is not worth reporting.
    std::string error;
    static_cast<void>(session->updateApplicationContext(contextDict_, &error));
}

}  // namespace velmorant::intents
