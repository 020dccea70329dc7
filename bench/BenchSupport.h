#pragma once

#include "demo/DemoData.h"
#include "platform/services/Platform.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <memory>
#include <vector>

namespace velmorant::bench {

// The demo night at a fixed instant (07:30 UTC the morning after), in memory,
// so every run draws the same figures.
inline std::unique_ptr<platform::Platform> demoPlatform(double scale) {
    platform::PlatformOptions options;
    options.timeZoneId = "UTC";
    options.localeId = "en_US";
    options.now = platform::Date::fromUnix(1709623800);
    options.scale = scale;
    auto platform = std::make_unique<platform::Platform>(std::move(options));
    demo::installDemoStores(*platform);
    return platform;
}

// Keeps the time of each measured call and reports the median and 90th
// percentile in milliseconds: one slow iteration (a page fault, another
// process) moves the mean but not these. The median of the process's CPU time
// per call is reported too: on a machine shared with other work it stays near
// what the call costs while the wall-clock figures grow with the load.
class Samples {
public:
    template <typename Measured>
    void time(Measured&& measured) {
        using Clock = std::chrono::steady_clock;
        const double cpuStart = cpuMilliseconds();
        const auto start = Clock::now();
        benchmark::DoNotOptimize(measured());
        wall_.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
        cpu_.push_back(cpuMilliseconds() - cpuStart);
    }
    void report(benchmark::State& state) {
        if (wall_.empty()) return;
        state.counters["median_ms"] = quantile(wall_, 0.5);
        state.counters["p90_ms"] = quantile(wall_, 0.9);
        state.counters["median_cpu_ms"] = quantile(cpu_, 0.5);
    }

private:
    static double cpuMilliseconds() {
        timespec now{};
        ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
        return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
    }
    static double quantile(std::vector<double>& samples, double q) {
        auto nth = samples.begin() + static_cast<std::ptrdiff_t>(q * static_cast<double>(samples.size() - 1));
        std::nth_element(samples.begin(), nth, samples.end());
        return *nth;
    }
    std::vector<double> wall_;
    std::vector<double> cpu_;
};

// Times `measured` once per iteration.
template <typename Measured>
void timeEach(benchmark::State& state, Measured measured) {
    Samples samples;
    for (auto _ : state) samples.time(measured);
    samples.report(state);
}

// Makes fresh objects with `prepare`, untimed, then times `measured` on them,
// once per iteration.
template <typename Prepare, typename Measured>
void timeEachFresh(benchmark::State& state, Prepare prepare, Measured measured) {
    Samples samples;
    for (auto _ : state) {
        state.PauseTiming();
        auto prepared = prepare();
        state.ResumeTiming();
        samples.time([&] { return measured(prepared); });
        state.PauseTiming();
        prepared = {};
        state.ResumeTiming();
    }
    samples.report(state);
}

}  // namespace velmorant::bench
