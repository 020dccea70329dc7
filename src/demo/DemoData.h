#pragma once

#include "platform/services/Platform.h"

namespace velmorant::demo {

// A believable night of results, dated for the current night of `platform`
// (night hour 21), as the main app would leave them.
struct DemoStores {
    platform::Dictionary shared;    // the app-group suite
    platform::Dictionary standard;  // the extension's own preferences
};

DemoStores makeDemoStores(const platform::Platform& platform);

// Puts the demo contents into the platform's stores (memory or files).
void installDemoStores(platform::Platform& platform);

}  // namespace velmorant::demo
