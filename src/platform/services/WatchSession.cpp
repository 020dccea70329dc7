#include "platform/services/WatchSession.h"

namespace velmorant::platform {

bool NoWatchConnectivity::isSupported() const { return false; }

WatchSession* NoWatchConnectivity::defaultSession() { return nullptr; }

}  // namespace velmorant::platform
