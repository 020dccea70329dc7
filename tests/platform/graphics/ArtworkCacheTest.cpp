#include "platform/graphics/ImageResources.h"
#include "platform/graphics/Image.h"
#include "platform/graphics/detail/ImageSurface.h"
#include "FlipByte.h"
#include "TempDir.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

using namespace velmorant::platform;

namespace {

namespace fs = std::filesystem;

const fs::path kImages = fs::path(VELMORANT_TEST_RESOURCE_DIR) / "images";

// The bitmap's rows without the stride's padding.
std::vector<unsigned char> pixels(const Image& image) {
    cairo_surface_flush(cairoSurface(image));
    const unsigned char* data = cairo_image_surface_get_data(cairoSurface(image));
    int stride = cairo_image_surface_get_stride(cairoSurface(image));
    std::vector<unsigned char> rows;
    for (int y = 0; y < image.pixelHeight(); ++y)
        rows.insert(rows.end(), data + y * stride, data + y * stride + image.pixelWidth() * 4);
    return rows;
}

fs::path onlyEntry(const fs::path& cache) {
    std::vector<fs::path> entries;
    for (const auto& entry : fs::directory_iterator(cache)) entries.push_back(entry.path());
    return entries.size() == 1 ? entries[0] : fs::path();
}

struct Load {
    std::vector<std::string> reports;
    ImagePtr operator()(const fs::path& images, const std::string& name, double scale, const fs::path& cache) {
        Diagnostics diagnostics([this](std::string_view message) { reports.emplace_back(message); });
        return loadNamedImage(images, name, scale, diagnostics, cache);
    }
};

TEST(ArtworkCache, KeptPicturesComeBackPixelForPixelAndDamagedOnesAreDrawnAgain) {
    Load load;
    ImagePtr drawn = load(kImages, "RechargeBkg.png", 3, {});
    ASSERT_TRUE(drawn);
    const std::vector<unsigned char> expected = pixels(*drawn);
    struct Case {
        const char* what;
        std::function<void(const fs::path& entry)> damage;
    };
    const Case cases[] = {
        {"kept as drawn", [](const fs::path&) {}},
        {"cut short", [](const fs::path& e) { fs::resize_file(e, fs::file_size(e) / 2); }},
        {"longer than its header says", [](const fs::path& e) { std::ofstream(e, std::ios::app) << "x"; }},
        {"not an entry", [](const fs::path& e) { std::ofstream(e, std::ios::trunc) << "something else entirely, long enough"; }},
        {"empty", [](const fs::path& e) { std::ofstream(e, std::ios::trunc); }},
        {"a pixel changed, length intact", [](const fs::path& e) { flipByte(e, fs::file_size(e) - 4); }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        TempDir cache;
        ImagePtr first = load(kImages, "RechargeBkg.png", 3, cache.path());
        fs::path entry = onlyEntry(cache.path());
        ASSERT_FALSE(entry.empty());
        const auto whole = fs::file_size(entry);
        c.damage(entry);
        ImagePtr again = load(kImages, "RechargeBkg.png", 3, cache.path());
        ASSERT_TRUE(again);
        EXPECT_EQ(again->size(), drawn->size());
        EXPECT_EQ(again->pixelWidth(), drawn->pixelWidth());
        EXPECT_EQ(again->name(), "RechargeBkg.png");
        EXPECT_TRUE(pixels(*again) == expected);
        // A damaged entry is replaced by a whole one.
        EXPECT_EQ(fs::file_size(onlyEntry(cache.path())), whole);
    }
    EXPECT_TRUE(load.reports.empty());
}

TEST(ArtworkCache, AnotherScaleOrChangedArtworkIsAnotherEntryAndBrokenArtworkIsNotKept) {
    TempDir cache, images;
    fs::copy_file(kImages / "LightsOn.svg", images.path() / "Lamp.svg");
    Load load;
    ASSERT_TRUE(load(images.path(), "Lamp", 2, cache.path()));
    ImagePtr atThree = load(images.path(), "Lamp", 3, cache.path());
    ASSERT_TRUE(atThree);
    EXPECT_EQ(atThree->pixelWidth(), 360);
    // Artwork changed under the same name is drawn anew, not taken from the cache.
    std::string svg;
    {
        std::ifstream in(images.path() / "Lamp.svg");
        svg.assign(std::istreambuf_iterator<char>(in), {});
    }
    std::ofstream(images.path() / "Lamp.svg", std::ios::trunc) << svg.substr(0, svg.rfind("</svg>"))
                                                                 << "<rect width='100%' height='100%' fill='red'/></svg>";
    ImagePtr changed = load(images.path(), "Lamp", 3, cache.path());
    ASSERT_TRUE(changed);
    EXPECT_NE(pixels(*changed), pixels(*atThree));
    EXPECT_EQ(std::distance(fs::directory_iterator(cache.path()), fs::directory_iterator()), 3);

    std::ofstream(images.path() / "Broken.svg") << "<svg";
    EXPECT_EQ(load(images.path(), "Broken", 3, cache.path()), nullptr);
    ASSERT_EQ(load.reports.size(), 1u);
    EXPECT_NE(load.reports[0].find("Broken.svg cannot be read"), std::string::npos) << load.reports[0];
    EXPECT_EQ(std::distance(fs::directory_iterator(cache.path()), fs::directory_iterator()), 3);
}

}  // namespace
