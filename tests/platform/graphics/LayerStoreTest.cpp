// Layers kept on disk come back in a later process (a new cache on the same
// folder) to the same pixels, without their steps; anything wrong with an entry
// or the folder only means the steps are drawn again.
#include "platform/graphics/LayerStore.h"

#include "FlipByte.h"
#include "TempDir.h"
#include "platform/graphics/FontSystem.h"
#include "platform/graphics/LayerCache.h"
#include "platform/graphics/detail/ImageSurface.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <vector>

namespace velmorant {
namespace {

namespace fs = std::filesystem;
using platform::Canvas;
using platform::Colour;
using platform::LayerCache;
using platform::LayerKey;
using platform::LayerStore;

const fs::path kResources(VELMORANT_TEST_RESOURCE_DIR);

const platform::FontSystem& fonts() {
    static const platform::FontSystem system(kResources / "fonts" / "fonts.conf");
    return system;
}

// A ring with a soft shadow and a label: what kept layers hold in the pictures.
void ringSteps(Canvas& layer) {
    layer.strokeArc({30, 30}, 20, 0, 5, {6, platform::LineCap::Round, Colour::whiteColor(), platform::Shadow::soft(2)});
    layer.drawAtPoint("7h", {22, 24}, {platform::Font::systemFontOfSize(9)});
}

std::vector<unsigned char> pixels(const platform::Image& image) {
    cairo_surface_flush(platform::cairoSurface(image));
    const unsigned char* data = cairo_image_surface_get_data(platform::cairoSurface(image));
    const int stride = cairo_image_surface_get_stride(platform::cairoSurface(image));
    std::vector<unsigned char> rows;
    for (int y = 0; y < image.pixelHeight(); ++y)
        rows.insert(rows.end(), data + y * stride, data + y * stride + image.pixelWidth() * 4);
    return rows;
}

std::vector<fs::path> entries(const fs::path& folder) {
    std::vector<fs::path> found;
    std::error_code ec;
    for (auto it = fs::directory_iterator(folder, ec); !ec && it != fs::directory_iterator(); it.increment(ec))
        found.push_back(it->path());
    return found;
}

// One process's drawing of one picture: a fresh cache over the store's folder.
struct Drawing {
    bool stepsRan = false;
    std::vector<unsigned char> pixels;
};

Drawing draw(const fs::path& folder, const LayerKey& key = LayerKey().add("ring"), platform::Size size = {60, 60},
             double scale = 3, const fs::path& resources = kResources, std::size_t maxBytes = LayerStore::kDefaultBytes) {
    LayerCache cache(4);
    if (!folder.empty()) cache.keepOnDisk(std::make_unique<LayerStore>(folder, resources, maxBytes));
    Canvas canvas(size, scale, fonts());
    Drawing drawing;
    cache.draw(canvas, key, fonts(), [&](Canvas& layer) {
        drawing.stepsRan = true;
        ringSteps(layer);
    });
    // Data drawn over the layer, as the pictures do.
    canvas.strokeArc({30, 30}, 20, 0, 2, {6, platform::LineCap::Round, Colour::systemRedColor(), platform::Shadow::soft(3)});
    drawing.pixels = pixels(*canvas.makeImage());
    return drawing;
}

TEST(LayerStore, ALaterProcessTakesTheKeptLayerAndDrawsTheSamePixels) {
    const Drawing withoutStore = draw({});
    TempDir folder;
    const Drawing first = draw(folder.path());
    EXPECT_TRUE(first.stepsRan);
    EXPECT_EQ(entries(folder.path()).size(), 1u);
    const Drawing later = draw(folder.path());
    EXPECT_FALSE(later.stepsRan) << "taken from the store";
    EXPECT_TRUE(first.pixels == withoutStore.pixels);
    EXPECT_TRUE(later.pixels == withoutStore.pixels);
}

TEST(LayerStore, AReaderThatGivesUpLeavesNothingOfWhatItWrote) {
    const std::vector<unsigned char> expected = [] {
        Canvas canvas({60, 60}, 3, fonts());
        ringSteps(canvas);
        return pixels(*canvas.makeImage());
    }();
    struct Case {
        const char* what;
        bool drawnFirst;
        bool readerSucceeds;
    };
    for (const Case& c : {Case{"the reader fails after writing", false, false},
                          Case{"the canvas was drawn on before", true, true}}) {
        SCOPED_TRACE(c.what);
        Canvas canvas({60, 60}, 3, fonts());
        if (c.drawnFirst) ringSteps(canvas);
        const bool taken = canvas.drawLayerFrom([&](Canvas::PixelRows rows) -> std::optional<platform::Rect> {
            for (int y = 0; y < rows.height; ++y) std::memset(rows.data + y * rows.stride, 0xff, rows.width * 4);
            if (!c.readerSucceeds) return std::nullopt;
            return platform::Rect{0, 0, 60, 60};
        });
        EXPECT_FALSE(taken);
        if (!c.drawnFirst) ringSteps(canvas);
        EXPECT_TRUE(pixels(*canvas.makeImage()) == expected);
    }
}

TEST(LayerStore, ADamagedEntryIsDrawnAgainAndReplacedByAWholeOne) {
    const Drawing expected = draw({});
    struct Case {
        const char* what;
        std::function<void(const fs::path& entry)> damage;
    };
    const Case cases[] = {
        {"a pixel changed, length intact", [](const fs::path& e) { flipByte(e, fs::file_size(e) - 9); }},
        {"its checksum changed", [](const fs::path& e) { flipByte(e, 72); }},
        {"its size in points changed", [](const fs::path& e) { flipByte(e, 23); }},
        {"cut short", [](const fs::path& e) { fs::resize_file(e, fs::file_size(e) - 1); }},
        {"longer than its header says", [](const fs::path& e) { std::ofstream(e, std::ios::app) << "x"; }},
        {"another kind of file", [](const fs::path& e) { flipByte(e, 2); }},
        {"empty", [](const fs::path& e) { std::ofstream(e, std::ios::trunc); }},
        {"a folder", [](const fs::path& e) { fs::remove(e), fs::create_directory(e); }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        TempDir folder;
        draw(folder.path());
        ASSERT_EQ(entries(folder.path()).size(), 1u);
        const fs::path entry = entries(folder.path())[0];
        const auto whole = fs::file_size(entry);
        c.damage(entry);
        const Drawing again = draw(folder.path());
        EXPECT_TRUE(again.stepsRan);
        EXPECT_TRUE(again.pixels == expected.pixels);
        if (fs::is_regular_file(entry)) {
            EXPECT_EQ(fs::file_size(entry), whole);
            EXPECT_FALSE(draw(folder.path()).stepsRan) << "the replacement is used";
        }
    }
}

TEST(LayerStore, KeySizeScaleAndArtworkEachNameAnotherEntry) {
    TempDir folder, resources;
    fs::create_directories(resources.path() / "images");
    std::ofstream(resources.path() / "images" / "Backdrop.svg") << "<svg/>";
    draw(folder.path(), LayerKey().add("ring"), {60, 60}, 3, resources.path());
    struct Row {
        const char* what;
        LayerKey key;
        platform::Size size;
        double scale;
    };
    const Row rows[] = {{"key", LayerKey().add("ring").add(1), {60, 60}, 3},
                        {"size", LayerKey().add("ring"), {60, 61}, 3},
                        {"scale", LayerKey().add("ring"), {60, 60}, 2}};
    for (const Row& row : rows)
        EXPECT_TRUE(draw(folder.path(), row.key, row.size, row.scale, resources.path()).stepsRan) << row.what;
    EXPECT_FALSE(draw(folder.path(), LayerKey().add("ring"), {60, 60}, 3, resources.path()).stepsRan);
    // The artwork a layer may draw changed under the same name.
    std::ofstream(resources.path() / "images" / "Backdrop.svg", std::ios::app) << "<!-- redrawn -->";
    EXPECT_TRUE(draw(folder.path(), LayerKey().add("ring"), {60, 60}, 3, resources.path()).stepsRan) << "artwork";
    EXPECT_EQ(entries(folder.path()).size(), 5u);
}

TEST(LayerStore, TheFolderStaysWithinItsSizeTheOldestEntriesGoFirst) {
    TempDir folder;
    // One 60-point layer at scale 3 takes 180 x 180 x 4 bytes and a header.
    const std::size_t room = 2 * (180 * 180 * 4 + 200);
    for (int ring = 0; ring < 5; ++ring)
        draw(folder.path(), LayerKey().add("ring").add(ring), {60, 60}, 3, kResources, room);
    std::uintmax_t total = 0;
    for (const fs::path& entry : entries(folder.path())) total += fs::file_size(entry);
    EXPECT_LE(total, room);
    EXPECT_EQ(entries(folder.path()).size(), 2u);
    EXPECT_FALSE(draw(folder.path(), LayerKey().add("ring").add(4), {60, 60}, 3, kResources, room).stepsRan)
        << "the newest is kept";
    EXPECT_TRUE(draw(folder.path(), LayerKey().add("ring").add(0), {60, 60}, 3, kResources, room).stepsRan)
        << "the oldest is gone";
}

TEST(LayerStore, AFolderThatCannotBeWrittenOnlyCostsTheDrawing) {
    const Drawing expected = draw({});
    TempDir parent;
    const fs::path aFile = parent.path() / "file";
    std::ofstream(aFile) << "not a folder";
    for (const fs::path& folder : {aFile, aFile / "below"}) {
        SCOPED_TRACE(folder.string());
        const Drawing drawing = draw(folder);
        EXPECT_TRUE(drawing.stepsRan);
        EXPECT_TRUE(drawing.pixels == expected.pixels);
        EXPECT_TRUE(draw(folder).stepsRan);
    }
    EXPECT_EQ(entries(parent.path()).size(), 1u) << "no temporary left behind";
}

TEST(LayerStore, TheFolderComesFromTheEnvironmentAnEmptyOneTurnsItOff) {
    const char* saved[] = {std::getenv("VELMORANT_CACHE_DIR"), std::getenv("XDG_CACHE_HOME")};
    const std::string kept[] = {saved[0] ? saved[0] : "", saved[1] ? saved[1] : ""};
    struct Row {
        const char* chosen;  // nullptr: unset
        const char* xdg;
        fs::path expected;
    };
    const Row rows[] = {{"/tmp/layers", "/x", "/tmp/layers"}, {"", "/x", ""}, {nullptr, "/x", "/x/velmorant"}};
    for (const Row& row : rows) {
        if (row.chosen) ::setenv("VELMORANT_CACHE_DIR", row.chosen, 1);
        else ::unsetenv("VELMORANT_CACHE_DIR");
        ::setenv("XDG_CACHE_HOME", row.xdg, 1);
        EXPECT_EQ(LayerStore::defaultFolder(), row.expected) << (row.chosen ? row.chosen : "unset");
    }
    const char* names[] = {"VELMORANT_CACHE_DIR", "XDG_CACHE_HOME"};
    for (int i = 0; i < 2; ++i) {
        if (saved[i]) ::setenv(names[i], kept[i].c_str(), 1);
        else ::unsetenv(names[i]);
    }
}

}  // namespace
}  // namespace velmorant
