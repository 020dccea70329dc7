// The gallery's cost: every snippet, its empty state, every widget picture and
// the widget mirrors, written as `scripts/demo.sh` writes them, at scale 3.
// Targets: under 1.5 s per gallery and a peak resident size under 40 MB
// (reported as "peak_rss_mb", the whole process's, libraries and fonts included).
#include "BenchSupport.h"
#include "cli/Gallery.h"

#include <sys/resource.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>

using namespace velmorant;

namespace {

void BM_Gallery(benchmark::State& state) {
    std::string pattern = (std::filesystem::temp_directory_path() / "velmorant-bench-gallery-XXXXXX").string();
    std::filesystem::path dir = ::mkdtemp(pattern.data());
    std::ostringstream progress;
    bench::timeEachFresh(
        state, [] { return bench::demoPlatform(3); },
        [&](std::unique_ptr<platform::Platform>& platform) {
            return cli::writeGallery(*platform, {.dir = dir / "gallery"}, progress);
        });
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    state.counters["peak_rss_mb"] = static_cast<double>(usage.ru_maxrss) / 1024;
    std::filesystem::remove_all(dir);
}
BENCHMARK(BM_Gallery)->Unit(benchmark::kMillisecond)->Iterations(5);

}  // namespace
