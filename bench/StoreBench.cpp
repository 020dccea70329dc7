// Speed of the store paths every request takes: a read of an unchanged file
// (a stat and the cached parse), a fresh parse, and a locked write.
#include "demo/DemoData.h"
#include "platform/store/FilePreferencesStore.h"
#include "platform/store/PlistCodec.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

using namespace velmorant;

namespace {

struct DemoFile {
    std::filesystem::path dir;
    std::filesystem::path file;
    platform::Diagnostics quiet{[](std::string_view) {}};

    DemoFile() {
        std::string pattern = (std::filesystem::temp_directory_path() / "velmorant-bench-XXXXXX").string();
        dir = ::mkdtemp(pattern.data());
        file = dir / "group.brumelkai.Velmorant.plist";
        platform::PlatformOptions options;
        options.timeZoneId = "UTC";
        platform::Platform p(options);
        auto stores = demo::makeDemoStores(p);
        platform::FilePreferencesStore store(file, quiet);
        if (!store.modify([&](platform::Dictionary& d) { d = stores.shared; }))
            throw std::runtime_error("cannot write the benchmark's store in " + dir.string());
    }
    ~DemoFile() { std::filesystem::remove_all(dir); }
};

void BM_ReadUnchangedStore(benchmark::State& state) {
    DemoFile demo;
    platform::FilePreferencesStore store(demo.file, demo.quiet);
    for (auto _ : state) benchmark::DoNotOptimize(store.objectForKey("bankDict"));
}
BENCHMARK(BM_ReadUnchangedStore);

void BM_ParseDemoStore(benchmark::State& state) {
    DemoFile demo;
    platform::FilePreferencesStore store(demo.file, demo.quiet);
    auto bytes = platform::serialisePlist(store.dictionaryRepresentation(), platform::PlistFormat::Binary, nullptr);
    for (auto _ : state) benchmark::DoNotOptimize(platform::parsePlist(*bytes, nullptr));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes->size()));
}
BENCHMARK(BM_ParseDemoStore);

void BM_LockedWrite(benchmark::State& state) {
    DemoFile demo;
    platform::FilePreferencesStore store(demo.file, demo.quiet);
    int i = 0;
    for (auto _ : state) store.setObject(platform::Value(++i), "cachedSleepBankUpdate");
}
BENCHMARK(BM_LockedWrite);

}  // namespace
