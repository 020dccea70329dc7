// `show` keeps its pictures' layers in the cache folder the environment names
// and, run again, draws the same card bytes from them; an empty name keeps none.
#include "RunProgram.h"

#include <cstdlib>

namespace {

// Sets an environment variable for one scope, then puts back what was there.
class ScopedEnvironment {
public:
    ScopedEnvironment(const char* name, const std::string& value) : name_(name) {
        if (const char* old = std::getenv(name)) old_ = old;
        ::setenv(name, value.c_str(), 1);
    }
    ~ScopedEnvironment() {
        if (old_) ::setenv(name_, old_->c_str(), 1);
        else ::unsetenv(name_);
    }

private:
    const char* name_;
    std::optional<std::string> old_;
};

std::string showCard(const std::string& intent, const fs::path& png) {
    Outcome outcome = run({"show", intent, "--png", png.string()});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return readFile(png);
}

long layerFiles(const fs::path& folder) {
    std::error_code ec;
    long count = 0;
    for (auto it = fs::directory_iterator(folder, ec); !ec && it != fs::directory_iterator(); it.increment(ec))
        count += it->path().extension() == ".layer";
    return count;
}

}  // namespace

TEST(ShowWithLayerStore, ASecondRunDrawsTheSameCardFromTheKeptLayers) {
    TempDir out, cache;
    // A ring card, a gauge, the bed clock and the recharge rings over their artwork.
    for (const std::string intent : {"SleepRingsIntent", "SleepSpO2Intent", "LatestBedtimeIntent", "TimeAsleepIntent"}) {
        SCOPED_TRACE(intent);
        std::string withoutStore;
        {
            ScopedEnvironment off("VELMORANT_CACHE_DIR", "");
            withoutStore = showCard(intent, out.path() / "off.png");
        }
        ScopedEnvironment on("VELMORANT_CACHE_DIR", cache.path().string());
        const long before = layerFiles(cache.path());
        const std::string first = showCard(intent, out.path() / "first.png");
        const long kept = layerFiles(cache.path());
        EXPECT_GT(kept, before) << "kept on the first run";
        const std::string second = showCard(intent, out.path() / "second.png");
        EXPECT_EQ(layerFiles(cache.path()), kept) << "found, so nothing new kept";
        EXPECT_TRUE(first == withoutStore);
        EXPECT_TRUE(second == withoutStore);
    }
}

TEST(ShowWithLayerStore, AnEmptyFolderNameKeepsNothing) {
    TempDir out, home;
    ScopedEnvironment off("VELMORANT_CACHE_DIR", "");
    ScopedEnvironment xdg("XDG_CACHE_HOME", home.path().string());
    showCard("SleepRingsIntent", out.path() / "card.png");
    EXPECT_FALSE(fs::exists(home.path() / "velmorant"));
}
