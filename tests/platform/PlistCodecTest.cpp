#include "platform/PlistCodec.h"

#include <gtest/gtest.h>

#include <string>

using namespace velmorant::platform;

namespace {

Dictionary sample() {
    return Dictionary{
        {"flag", true},
        {"count", 42},
        {"negative", -7},
        {"ratio", 0.875},
        {"name", "Velmorant ☾"},
        {"when", Date::fromUnix(1709416800.5)},
        {"blob", Data{0, 1, 254, 255}},
        {"list", Array{Value(1), Value("two"), Value(Dictionary{{"k", 3.5}})}},
        {"bankDict", Dictionary{{"key", "20240302"}, {"nightHour", 21}}},
    };
}

std::span<const std::uint8_t> bytes(const std::string& s) {
    return {reinterpret_cast<const std::uint8_t*>(s.data()), s.size()};
}

TEST(PlistCodec, RoundTripsEveryKindInBothFormats) {
    for (PlistFormat format : {PlistFormat::Binary, PlistFormat::Xml}) {
        SCOPED_TRACE(format == PlistFormat::Binary ? "binary" : "xml");
        std::string error;
        auto written = serialisePlist(sample(), format, &error);
        ASSERT_TRUE(written) << error;
        auto read = parsePlist(*written, &error);
        ASSERT_TRUE(read) << error;
        EXPECT_EQ(read->format, format);
        Dictionary expected = sample();
        if (format == PlistFormat::Xml)  // XML keeps whole seconds only
            expected.setObject(Date::fromUnix(1709416800), "when");
        EXPECT_EQ(read->root, expected);
    }
}

TEST(PlistCodec, RefusesWhatCannotBeStored) {
    std::string error;
    Dictionary d{{"record", Dictionary{{"tint", Colour::blackColor()}}}};
    EXPECT_FALSE(serialisePlist(d, PlistFormat::Binary, &error));
    EXPECT_NE(error.find("record.tint"), std::string::npos) << error;
}

std::string nestedXml(int depth) {
    std::string s = "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>a</key>";
    for (int i = 0; i < depth; ++i) s += "<array>";
    for (int i = 0; i < depth; ++i) s += "</array>";
    return s + "</dict></plist>";
}

// A binary list whose top array contains itself.
std::string selfReferencingBinary() {
    std::string s = "bplist00";
    s += '\xA1';  // array of one
    s += '\x00';  // ... referring to object 0, itself
    std::size_t tableOffset = s.size();
    s += '\x08';  // offset of object 0
    std::string trailer(32, '\0');
    trailer[6] = 1;   // offset size
    trailer[7] = 1;   // reference size
    trailer[15] = 1;  // one object
    trailer[31] = static_cast<char>(tableOffset);
    return s + trailer;
}

TEST(PlistCodec, RejectsHostileAndDamagedInputWithAReason) {
    struct Case {
        const char* name;
        std::string input;
        const char* reason;
    };
    const Case cases[] = {
        {"empty", "", "empty"},
        {"garbage", "not a plist at all", "not a valid"},
        {"deep xml", nestedXml(100000), "nested too deeply"},
        {"binary cycle", selfReferencingBinary(), "refers to itself"},
        {"truncated binary", "bplist00\xA1", "truncated"},
        {"array root", "<?xml version=\"1.0\"?><plist version=\"1.0\"><array/></plist>", "not a dictionary"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::string error;
        EXPECT_FALSE(parsePlist(bytes(c.input), &error));
        EXPECT_NE(error.find(c.reason), std::string::npos) << error;
    }
}

TEST(PlistCodec, AcceptsModestNesting) {
    std::string error;
    EXPECT_TRUE(parsePlist(bytes(nestedXml(20)), &error)) << error;
}

}  // namespace
