// Replays every input that once broke the store harness, and the seed stores,
// through the same checks the fuzzer makes.
#include "StoreHarness.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace {

namespace fs = std::filesystem;
using velmorant::fuzz::checkStoreInput;

std::vector<fs::path> filesIn(const fs::path& dir) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(dir))
        if (entry.is_regular_file() && entry.path().filename().string()[0] != '.') files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

class StoreInputs : public ::testing::TestWithParam<const char*> {};

TEST_P(StoreInputs, PassEveryCheck) {
    const fs::path dir = fs::path(VELMORANT_FUZZ_DIR) / GetParam();
    auto files = filesIn(dir);
    ASSERT_TRUE(fs::is_directory(dir)) << dir;
    for (const fs::path& file : files) {
        for (const std::string& problem : checkStoreInput(velmorant::fuzz::readFileBytes(file)))
            ADD_FAILURE() << file.filename().string() << ": " << problem;
    }
}

INSTANTIATE_TEST_SUITE_P(Fuzz, StoreInputs, ::testing::Values("regressions", "corpus"));

TEST(StoreHarness, FindsGarbageAndSplitsInputs) {
    struct Case {
        const char* text;
        bool garbage;
    };
    for (const Case& c : {Case{"95.4%", false}, Case{"nan%", true}, Case{"-INF bpm", true}, Case{"\"RequiredHours\":\"-\u221E\"", true}, Case{"Try to be in bed by (null)", true},
                          Case{"7h 36m", false}, Case{"", false}})
        EXPECT_EQ(velmorant::fuzz::looksLikeGarbage(c.text), c.garbage) << c.text;

    using velmorant::fuzz::StoreInput;
    const StoreInput whole{{'s', 't'}, {'x', 'y', 'z'}};
    auto again = velmorant::fuzz::decodeInput(velmorant::fuzz::encodeInput(whole));
    EXPECT_EQ(again.standard, whole.standard);
    EXPECT_EQ(again.shared, whole.shared);
    // A length past the end takes what there is; a one-byte input is all shared store.
    const std::vector<std::uint8_t> shortInput{0xFF, 0xFF, 'a'};
    EXPECT_EQ(velmorant::fuzz::decodeInput(shortInput).standard, std::vector<std::uint8_t>{'a'});
    EXPECT_EQ(velmorant::fuzz::decodeInput(std::vector<std::uint8_t>{'a'}).shared, std::vector<std::uint8_t>{'a'});
}

}  // namespace
