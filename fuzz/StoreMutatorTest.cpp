// The structure-aware mutator must reach what byte mutations rarely do:
// nesting past the limit, and markup that hides tags, in stores that still
// parse.
#include "StoreMutator.h"

#include "StoreHarness.h"

#include "platform/store/PlistCodec.h"

#include <gtest/gtest.h>

#include <string_view>

namespace {

using namespace velmorant;

std::vector<std::uint8_t> store(platform::PlistFormat format) {
    platform::Dictionary root{{"bankDict", platform::Dictionary{{"spO2Dict", platform::Dictionary{{"averageSpO2", 95.5}}}}},
                              {"lastConsistency", true}};
    return *platform::serialisePlist(root, format, nullptr);
}

TEST(StoreMutator, DeepensHidesTagsAndKeepsStoresReadable) {
    std::mt19937 random(7);
    int readable = 0, tooDeep = 0, hidden = 0;
    for (platform::PlistFormat format : {platform::PlistFormat::Xml, platform::PlistFormat::Binary}) {
        const auto start = fuzz::encodeInput({store(platform::PlistFormat::Binary), store(format)});
        std::vector<std::uint8_t> input = start;
        for (int step = 0; step < 400; ++step) {
            auto next = fuzz::mutateStoreInput(input, random);
            if (!next || next->size() > 200000) {
                input = start;
                continue;
            }
            input = *next;
            const auto shared = fuzz::decodeInput(input).shared;
            const std::string_view text(reinterpret_cast<const char*>(shared.data()), shared.size());
            std::string error;
            if (platform::parsePlist(shared, &error)) {
                ++readable;
                hidden += text.find("<!--") != std::string_view::npos || text.find("<?velmorant") != std::string_view::npos;
            }
            tooDeep += error.find("nested too deeply") != std::string::npos;
            if (step % 25 == 24) input = start;
        }
    }
    EXPECT_GT(readable, 100);
    EXPECT_GT(tooDeep, 10);
    EXPECT_GT(hidden, 10);
}

TEST(StoreMutator, LeavesWhatDoesNotParseToByteMutations) {
    std::mt19937 random(1);
    const std::string garbage = "not a store";
    EXPECT_FALSE(fuzz::mutateStoreInput(fuzz::encodeInput({{}, {garbage.begin(), garbage.end()}}), random));
}

}  // namespace
