#pragma once

#include "platform/core/Value.h"

#include <optional>
#include <string>

namespace velmorant::platform {

enum class WatchActivationState { NotActivated, Inactive, Activated };

class WatchSession;

// Told how a session's activation ended and when it goes inactive.
class WatchSessionDelegate {
public:
    virtual ~WatchSessionDelegate() = default;
    // Activation finished in `state`; `error` says why it failed, none on success.
    virtual void session(WatchSession& session, WatchActivationState state,
                         const std::optional<std::string>& error) = 0;
    virtual void sessionDidBecomeInactive(WatchSession& session) = 0;
    virtual void sessionDidDeactivate(WatchSession& session) = 0;
};

// The phone's link to its paired watch.
class WatchSession {
public:
    virtual ~WatchSession() = default;
    virtual bool isPaired() const = 0;
    virtual bool isWatchAppInstalled() const = 0;
    // The delegate is not owned; it must outlive the session's use of it.
    virtual void setDelegate(WatchSessionDelegate* delegate) = 0;
    // Starts activation; the delegate hears how it ended.
    virtual void activateSession() = 0;
    // Sends the context for the watch app; false with `error` set when it cannot.
    [[nodiscard]] virtual bool updateApplicationContext(const Dictionary& context, std::string* error) = 0;
};

// Whether this device has watch sessions at all, and its default session.
class WatchConnectivity {
public:
    virtual ~WatchConnectivity() = default;
    virtual bool isSupported() const = 0;
    // None when the device has no watch sessions.
    virtual WatchSession* defaultSession() = 0;
};

// Linux has no paired watch: sessions are unsupported and there is no default one.
class NoWatchConnectivity final : public WatchConnectivity {
public:
    bool isSupported() const override;
    WatchSession* defaultSession() override;
};

}  // namespace velmorant::platform
