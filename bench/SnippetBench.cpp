// Each snippet as the host asks for it, in process at scale 3 on the demo
// stores: store read, records, drawing and view record, through a controller
// made fresh for the call, as the extension gets one per interaction. Target:
// under 5 ms median per snippet. The widget mirrors (store read, record,
// "Swift-" keys written back) are measured the same way on a fresh object.
#include "BenchSupport.h"

#include "intents/IntentViewController.h"
#include "intents/Intents.h"
#include "snippet_ui/SleepMetricsUI.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <string>

using namespace velmorant;
using intents::ExtensionContext;
using intents::IntentViewController;
using intents::Interaction;
using intents::InteractiveBehavior;
using intents::ParameterSet;
using intents::kIntentTypeNames;
using intents::makeIntent;
using snippet_ui::SleepMetricsUI;

namespace {

void BM_snippet(benchmark::State& state, std::string_view intentName) {
    auto platform = bench::demoPlatform(3);
    const Interaction interaction{makeIntent(intentName)};
    platform::Size size;
    bench::timeEachFresh(
        state, [&] { return std::make_unique<IntentViewController>(*platform, ExtensionContext{}); },
        [&](const std::unique_ptr<IntentViewController>& controller) {
            controller->configureViewForParameters({}, interaction, InteractiveBehavior::None, nullptr,
                                                   [&](bool, const ParameterSet&, platform::Size s) { size = s; });
            return size.height;
        });
    if (size.height == 0) state.SkipWithError("the snippet never called its completion");
}

using Mirror = void (SleepMetricsUI::*)();

void BM_mirror(benchmark::State& state, Mirror mirror) {
    auto platform = bench::demoPlatform(3);
    bench::timeEachFresh(
        state, [&] { return std::make_unique<SleepMetricsUI>(*platform); },
        [&](const std::unique_ptr<SleepMetricsUI>& ui) {
            ((*ui).*mirror)();
            return ui.get();
        });
}

int registerAll() {
    for (std::string_view intent : kIntentTypeNames) {
        benchmark::RegisterBenchmark(("BM_snippet/" + std::string(intent)).c_str(), BM_snippet, intent)
            ->Unit(benchmark::kMillisecond);
    }
    const std::pair<const char*, Mirror> mirrors[] = {
        {"requestSpO2ForSwift", &SleepMetricsUI::requestSpO2ForSwift},
        {"requestRespRateForSwift", &SleepMetricsUI::requestRespRateForSwift},
        {"requestReadinessForSwift", &SleepMetricsUI::requestReadinessForSwift},
        {"requestOctaneForSwift", &SleepMetricsUI::requestOctaneForSwift},
        {"requestLatestBedtimeForSwift", &SleepMetricsUI::requestLatestBedtimeForSwift},
        {"requestSleepBankForSwift", &SleepMetricsUI::requestSleepBankForSwift},
    };
    for (const auto& [name, mirror] : mirrors) {
        benchmark::RegisterBenchmark((std::string("BM_mirror/") + name).c_str(), BM_mirror, mirror)
            ->Unit(benchmark::kMillisecond);
    }
    return 0;
}

[[maybe_unused]] const int registered = registerAll();

}  // namespace
