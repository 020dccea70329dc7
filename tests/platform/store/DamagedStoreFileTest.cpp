// Store files that only damage produces: each is read as empty, reported
// once with the reason, and never overwritten.
#include "StoreChecks.h"
#include "TempDir.h"

#include "platform/store/FilePreferencesStore.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

namespace {

using namespace velmorant;
using platform::Dictionary;
using platform::Value;
using Bytes = std::vector<std::uint8_t>;

void writeFile(const std::filesystem::path& file, const Bytes& bytes) {
    std::ofstream(file, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

Bytes binaryStore(const Dictionary& root) {
    std::string error;
    return *platform::serialisePlist(root, platform::PlistFormat::Binary, &error);
}

// The bytes of `text` inside a serialised store, replaced by `with`.
Bytes patched(Bytes bytes, std::string_view text, const Bytes& with) {
    auto at = std::search(bytes.begin(), bytes.end(), text.begin(), text.end(),
                          [](std::uint8_t b, char c) { return b == static_cast<std::uint8_t>(c); });
    EXPECT_NE(at, bytes.end()) << text;
    std::copy(with.begin(), with.end(), at);
    return bytes;
}

Bytes xml(std::string_view body) {
    std::string s = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>" + std::string(body) +
                    "</dict></plist>";
    return Bytes(s.begin(), s.end());
}

Bytes deeplyNested() {
    std::string body = "<key>a</key>";
    for (int i = 0; i < 70; ++i) body.insert(12, "<array>").append("</array>");
    return xml(body);
}


struct Damage {
    const char* name;
    Bytes bytes;
    const char* reported;
};

// Files that only damage produces are read as empty, reported once with the
// reason, and never overwritten; in particular none of them may abort the program.
TEST(DamagedStoreFile, ReadsEmptyIsReportedAndIsNeverOverwritten) {
    static constexpr char kRawNul[] = "<key>a</key><string>x\0y</string>";
    const Bytes utf16 = binaryStore(Dictionary{{"key", Value("\u00E9\u00E9")}});  // non-ASCII: kept as UTF-16
    const Damage cases[] = {
        {"NUL in a binary ASCII text", patched(binaryStore(Dictionary{{"key", Value("abc")}}), "abc", {'a', 0, 'c'}), "NUL"},
        {"NUL in a binary key", patched(binaryStore(Dictionary{{"kez", Value(1)}}), "kez", {'k', 0, 'z'}), "NUL"},
        {"NUL in a binary UTF-16 text", patched(utf16, std::string_view("\x00\xE9\x00\xE9", 4), {0, 0xE9, 0, 0}), "NUL"},
        {"NUL in an XML text", xml(std::string_view(kRawNul, sizeof kRawNul - 1)), "NUL"},
        {"NUL as an XML character reference", xml("<key>a</key><string>x&#x00;y</string>"), "NUL"},
        {"invalid UTF-8 in a binary text", patched(binaryStore(Dictionary{{"key", Value("abc")}}), "abc", {'a', 0xFF, 'c'}), "UTF-8"},
        {"invalid UTF-8 in an XML key", xml("<key>a\xC3</key><string>x</string>"), "UTF-8"},
        {"nested too deeply", deeplyNested(), "too deeply"},
        {"a date past what the reader holds", xml("<key>rawSynchTime</key><date>4001-01-01T00:00:00Z</date>"), "outside the years"},
        {"cut short", Bytes(utf16.begin(), utf16.begin() + static_cast<std::ptrdiff_t>(utf16.size() / 2)), "binary property list"},
    };
    for (const Damage& c : cases) {
        SCOPED_TRACE(c.name);
        TempDir dir;
        const std::filesystem::path file = dir.path() / "group.brumelkai.Velmorant.plist";
        writeFile(file, c.bytes);
        std::vector<std::string> reports;
        platform::Diagnostics diagnostics([&](std::string_view m) { reports.emplace_back(m); });
        platform::FilePreferencesStore store(file, diagnostics);
        EXPECT_TRUE(store.dictionaryRepresentation().empty());
        EXPECT_TRUE(store.objectForKey("key").isNone());
        EXPECT_FALSE(store.setObject(Value(1), "cachedSleepBankUpdate"));
        EXPECT_EQ(fuzz::readFileBytes(file), c.bytes);
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_NE(reports[0].find(file.string()), std::string::npos) << reports[0];
        EXPECT_NE(reports[0].find(c.reported), std::string::npos) << reports[0];
    }
}

}  // namespace
