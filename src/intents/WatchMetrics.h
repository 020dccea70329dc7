#pragma once

#include "platform/core/Value.h"
#include "platform/services/WatchSession.h"

#include <optional>
#include <string>

namespace velmorant::intents {

// What the owner of a WatchMetrics may be told; no operation is needed yet.
class WatchMetricsDelegate {
public:
    virtual ~WatchMetricsDelegate() = default;
};

// Sends a context dictionary to the paired watch app once its session is active.
class WatchMetrics final : public platform::WatchSessionDelegate {
public:
    // `connectivity` must outlive this object.
    explicit WatchMetrics(platform::WatchConnectivity& connectivity) : connectivity_(connectivity) {}

    // Keeps the context; where watch sessions exist, activates the default one to send it.
    void updateWatchContextWithDict(const platform::Dictionary& dict);
    // Activation ended: without an error the context is sent.
    void session(platform::WatchSession& session, platform::WatchActivationState state,
                 const std::optional<std::string>& error) override;
    void sessionDidBecomeInactive(platform::WatchSession& session) override;
    void sessionDidDeactivate(platform::WatchSession& session) override;
    // Sends the context when a watch is paired and its app installed; a failed send is dropped.
    void performUpdateWatchContext();

    const platform::Dictionary& contextDict() const { return contextDict_; }
    WatchMetricsDelegate* delegate() const { return delegate_; }
    // Not owned: the owner must outlive this object.
    void setDelegate(WatchMetricsDelegate* delegate) { delegate_ = delegate; }

private:
    platform::WatchConnectivity& connectivity_;
    platform::Dictionary contextDict_;
    WatchMetricsDelegate* delegate_ = nullptr;
};

}  // namespace velmorant::intents
