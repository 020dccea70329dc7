// Reviewing a whole gallery (snippets, empty states, widget pictures and
// mirrors, at scale 3) against another, reading both from disk and writing the
// report. Target: under 0.3 s. "unchanged" reviews a gallery against its own
// copy and should cost no more than reading the two ("read"); "changed"
// reviews a gallery drawn for a later hour, where pictures are decoded and
// compared pixel by pixel.
#include "BenchSupport.h"
#include "cli/Gallery.h"
#include "review/GalleryReader.h"
#include "review/Review.h"
#include "review/ReviewReport.h"

#include <cstdlib>
#include <filesystem>
#include <sstream>

using namespace velmorant;
namespace fs = std::filesystem;

namespace {

// Three galleries made once: a baseline, its copy, and one drawn 90 minutes later.
struct Galleries {
    fs::path dir, baseline, copy, later;
    Galleries() {
        std::string pattern = (fs::temp_directory_path() / "velmorant-bench-review-XXXXXX").string();
        dir = ::mkdtemp(pattern.data());
        baseline = dir / "baseline", copy = dir / "copy", later = dir / "later";
        std::ostringstream progress;
        cli::writeGallery(*bench::demoPlatform(3), {.dir = baseline}, progress);
        fs::copy(baseline, copy, fs::copy_options::recursive);
        auto platform = bench::demoPlatform(3);
        platform->setNow(platform->now().dateByAddingTimeInterval(-5400));
        cli::writeGallery(*platform, {.dir = later}, progress);
    }
    ~Galleries() { fs::remove_all(dir); }
};

const Galleries& galleries() {
    static Galleries made;
    return made;
}

void BM_reviewGallery(benchmark::State& state) {
    const Galleries& g = galleries();
    const fs::path& newer = state.range(0) ? g.later : g.copy;
    std::size_t changed = 0;
    bench::timeEach(state, [&] {
        review::Review result = review::reviewGalleries(review::readGallery(newer), review::readGallery(g.baseline), {});
        review::writeReview(result);
        changed = result.count(review::ItemStatus::Changed);
        return changed;
    });
    state.counters["changed"] = static_cast<double>(changed);
    state.SetLabel(state.range(0) ? "changed" : "unchanged");
}
BENCHMARK(BM_reviewGallery)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->Iterations(10);

void BM_readGalleries(benchmark::State& state) {
    const Galleries& g = galleries();
    bench::timeEach(state, [&] { return review::readGallery(g.copy).files.size() + review::readGallery(g.baseline).files.size(); });
    state.SetLabel("read");
}
BENCHMARK(BM_readGalleries)->Unit(benchmark::kMillisecond)->Iterations(10);

}  // namespace
