#include "platform/store/PlistCodec.h"

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

std::string repeat(std::string_view piece, int times) {
    std::string out;
    for (int i = 0; i < times; ++i) out += piece;
    return out;
}

std::string xmlStore(std::string_view body, std::string_view prolog = "") {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + std::string(prolog) + "<plist version=\"1.0\"><dict>" +
           std::string(body) + "</dict></plist>\n";
}

// `depth` arrays under key "a", each opened with `open`.
std::string nestedXml(int depth, std::string_view open = "<array>", std::string_view before = "") {
    return xmlStore(std::string(before) + "<key>a</key>" + repeat(open, depth) + repeat("</array>", depth));
}

// A binary list of the given objects (one-byte references, two-byte offsets);
// object 0 is the top.
std::string binaryList(const std::vector<std::string>& objects) {
    std::string s = "bplist00";
    std::vector<std::size_t> offsets;
    for (const std::string& o : objects) offsets.push_back(s.size()), s += o;
    const std::size_t tableOffset = s.size();
    for (std::size_t o : offsets) s += static_cast<char>(o >> 8), s += static_cast<char>(o & 0xFF);
    std::string trailer(32, '\0');
    trailer[6] = 2;  // offset size
    trailer[7] = 1;  // reference size
    trailer[15] = static_cast<char>(objects.size());
    trailer[30] = static_cast<char>(tableOffset >> 8);
    trailer[31] = static_cast<char>(tableOffset & 0xFF);
    return s + trailer;
}

// A dictionary {"a": array 1}, and arrays 1..levels each holding the next one
// `fanOut` times; the last holds nothing, or one text met nowhere else.
std::string binaryChain(int levels, int fanOut, bool textAtTheBottom = false) {
    std::vector<std::string> objects{std::string("\xD1\x01\x02", 3), std::string("\x51" "a", 2)};
    for (int i = 0; i < levels; ++i) {
        const bool last = i + 1 == levels;
        const int held = last ? (textAtTheBottom ? 1 : 0) : fanOut;
        std::string array(1, static_cast<char>(0xA0 | held));
        array += std::string(static_cast<std::size_t>(held), static_cast<char>(objects.size() + 1));
        objects.push_back(array);
    }
    if (textAtTheBottom) objects.push_back(std::string("\x51" "z", 2));
    objects[0][2] = 2;
    return binaryList(objects);
}

// {"a": a chain of `shared` arrays, "b": a chain of `above` arrays whose last
// holds that same first chain}: only as deep as the limit allows through "a",
// deeper through "b".
std::string binaryDeepPartSharedFromDeeper(int shared, int above) {
    std::vector<std::string> objects{std::string("\xD2\x01\x02\x03\x00", 5), std::string("\x51" "a", 2),
                                     std::string("\x51" "b", 2)};
    for (int i = 0; i < shared; ++i)
        objects.push_back(i + 1 == shared ? std::string("\xA0", 1) : "\xA1" + std::string(1, static_cast<char>(objects.size() + 1)));
    objects[0][4] = static_cast<char>(objects.size());
    for (int i = 0; i < above; ++i)
        objects.push_back("\xA1" + std::string(1, static_cast<char>(i + 1 == above ? 3 : objects.size() + 1)));
    return binaryList(objects);
}

// A binary list whose top array contains itself.
std::string selfReferencingBinary() { return binaryList({std::string("\xA1\x00", 2)}); }

struct Refusal {
    const char* name;
    std::string input;
    const char* reason;
};

void expectRefused(const Refusal& c) {
    SCOPED_TRACE(c.name);
    std::string error;
    EXPECT_FALSE(parsePlist(bytes(c.input), &error));
    EXPECT_NE(error.find(c.reason), std::string::npos) << error;
}

TEST(PlistCodec, RejectsHostileAndDamagedInputWithAReason) {
    const Refusal cases[] = {
        {"empty", "", "empty"},
        {"garbage", "not a plist at all", "not a valid"},
        {"deep xml", nestedXml(100000), "nested too deeply"},
        {"binary cycle", selfReferencingBinary(), "refers to itself"},
        {"truncated binary", "bplist00\xA1", "truncated"},
        {"array root", "<?xml version=\"1.0\"?><plist version=\"1.0\"><array/></plist>", "not a dictionary"},
        {"unknown element", xmlStore("<key>a</key><arrayx></arrayx>"), "not a valid"},
        {"unterminated comment", xmlStore("<!-- <key>a</key><true/>"), "not a valid"},
    };
    for (const auto& c : cases) expectRefused(c);
}

// Nesting that markup the parser skips (or reads differently from plain tag
// counting) would hide from a count of tags in the text.
TEST(PlistCodec, NestingCannotHideFromTheDepthLimit) {
    const std::string closings = repeat("</array>", 200);
    const Refusal cases[] = {
        {"end tags in a comment before", nestedXml(20000, "<array>", "<!--" + repeat("</array>", 20000) + "-->"), "nested too deeply"},
        {"end tags in a processing instruction", nestedXml(100, "<array>", "<?pi " + closings + "?>"), "nested too deeply"},
        {"a quoted ?> in a processing instruction", nestedXml(100, "<array>", "<?pi \"?>\" " + closings + "?>"), "nested too deeply"},
        {"end tags in a CDATA section", nestedXml(100, "<array>", "<key>s</key><string><![CDATA[" + closings + "]]></string>"), "nested too deeply"},
        {"end tags in a comment inside a text", nestedXml(100, "<array>", "<key>s</key><string>x<!--" + closings + "--></string>"), "nested too deeply"},
        {"end tags escaped in a text", nestedXml(100, "<array>", "<key>s</key><string>" + repeat("&lt;/array&gt;", 200) + "</string>"), "nested too deeply"},
        {"end tags in a DOCTYPE internal subset",
         xmlStore("<key>a</key>" + repeat("<array>", 100) + repeat("</array>", 100), "<!DOCTYPE plist [ <!ENTITY e \"" + closings + "\"> " + closings + " ]>\n"),
         "nested too deeply"},
        {"a quoted /> inside an opening tag", nestedXml(100, "<array a=\"/>\">"), "nested too deeply"},
        {"attributes and spaces in opening tags", nestedXml(100, "<array\n x='1' >"), "nested too deeply"},
        {"one level past the limit", nestedXml(kMaxPlistDepth), "nested too deeply"},
        {"binary nested past the limit", binaryChain(kMaxPlistDepth + 2, 1), "nested too deeply"},
        {"binary one level past the limit, a text at the bottom", binaryChain(kMaxPlistDepth, 1, true), "nested too deeply"},
        {"binary deep part shared from deeper down", binaryDeepPartSharedFromDeeper(40, 30), "nested too deeply"},
        {"binary parts shared exponentially", binaryChain(40, 2), "repeats its parts"},
        {"binary count wider than eight bytes", binaryList({std::string("\xDF\x14", 2) + std::string(16, '\0')}), "bad object"},
    };
    for (const auto& c : cases) expectRefused(c);
}

TEST(PlistCodec, ReadsWhatOnlyLooksDeep) {
    struct Case {
        const char* name;
        std::string input;
    };
    const Case cases[] = {
        {"the limit exactly", nestedXml(kMaxPlistDepth - 1)},
        {"the limit exactly, a text at the bottom",
         xmlStore("<key>a</key>" + repeat("<array>", kMaxPlistDepth - 1) + "<string>z</string>" + repeat("</array>", kMaxPlistDepth - 1))},
        {"many self-closing siblings", xmlStore("<key>a</key><array>" + repeat("<array/><dict/>", 100) + "</array>")},
        {"self-closing elements at the deepest level", nestedXml(kMaxPlistDepth - 2, "<array><array/><array />")},
        {"opening tags in a comment", nestedXml(3, "<array>", "<!--" + repeat("<array>", 100) + "-->")},
        {"opening tags in a text", nestedXml(3, "<array>", "<key>s</key><string><![CDATA[" + repeat("<dict>", 100) + "]]></string>")},
        {"the usual prolog", xmlStore("<key>a</key><true/>",
                                      "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n")},
        // Only containers count as levels, whichever path meets a shared value first.
        {"binary at the limit exactly, a text at the bottom", binaryChain(kMaxPlistDepth - 1, 1, true)},
        {"binary deep part shared from no deeper", binaryDeepPartSharedFromDeeper(40, 20)},
        {"binary sharing a text many times", binaryList({std::string("\xD2\x01\x02\x03\x03", 5), std::string("\x51" "a", 2), std::string("\x51" "b", 2), std::string("\x51" "c", 2)})},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::string error;
        EXPECT_TRUE(parsePlist(bytes(c.input), &error)) << error;
    }
}

}  // namespace
