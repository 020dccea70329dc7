#include "platform/store/detail/PlistStructure.h"

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <vector>

namespace velmorant::platform {
namespace {

constexpr const char* kTooDeep = "property list is nested too deeply";

// The XML reader's own scanning steps, reproduced: where it looks for the end
// of a construct, and where it skips a double-quoted run while looking, decide
// which '<' it takes for markup.
class XmlScanner {
public:
    XmlScanner(std::string_view text, int maxDepth) : s_(text), maxDepth_(maxDepth) {}

    bool run(std::string* error);

private:
    bool atEnd() const { return pos_ >= s_.size(); }
    bool at(std::string_view word) const { return s_.compare(pos_, word.size(), word) == 0; }
    bool isSpace(char c) const { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

    void skipSpace() {
        while (!atEnd() && isSpace(s_[pos_])) ++pos_;
    }
    // From an opening quote to its closing one (or the end).
    void skipQuoted() {
        ++pos_;
        while (!atEnd() && s_[pos_] != '"') ++pos_;
    }
    void findChar(char c) {
        while (!atEnd() && s_[pos_] != c) ++pos_;
    }
    // Stops on `word`; false when the text ends first (or a quote runs past it).
    bool find(std::string_view word, bool quotes) {
        while (pos_ + word.size() < s_.size()) {
            if (at(word)) break;
            if (quotes && s_[pos_] == '"') {
                skipQuoted();
                if (atEnd()) return false;
            }
            ++pos_;
        }
        return pos_ + word.size() <= s_.size() && at(word);
    }
    // Stops on any of `chars`, or at the end.
    void findAny(std::string_view chars, bool quotes) {
        while (!atEnd()) {
            if (quotes && s_[pos_] == '"') {
                skipQuoted();
                if (atEnd()) return;
            }
            if (chars.find(s_[pos_]) != std::string_view::npos) return;
            ++pos_;
        }
    }
    bool skipSpecial();
    bool skipTextContent(std::string_view tag, bool leadingSpace);
    bool fail(std::string* error, const char* what) {
        *error = std::string("not a valid property list: ") + what + " at byte " + std::to_string(std::min(pos_, s_.size()));
        return false;
    }

    std::string_view s_;
    int maxDepth_;
    std::size_t pos_ = 0;
};

// After "<!": a comment or a DOCTYPE, whose internal subset ends at the first
// "]>" outside quotes.
bool XmlScanner::skipSpecial() {
    if (s_.size() - pos_ > 3 && at("!--")) {
        pos_ += 3;
        if (!find("-->", false)) return false;
        pos_ += 3;
        return true;
    }
    if (s_.size() - pos_ > 8 && at("!DOCTYPE")) {
        pos_ += 8;
        bool subset = false;
        while (!atEnd()) {
            findAny(" \t\r\n[>", true);
            if (atEnd()) return false;
            if (s_[pos_] == '[') {
                subset = true;
                break;
            }
            if (s_[pos_] == '>') {
                ++pos_;
                break;
            }
            skipSpace();
        }
        if (subset) {
            if (!find("]>", true)) return false;
            pos_ += 2;
        }
        return true;
    }
    return false;
}

// The text of a scalar element up to its end tag: characters, comments and
// CDATA sections only.
bool XmlScanner::skipTextContent(std::string_view tag, bool leadingSpace) {
    if (leadingSpace) skipSpace();
    for (;;) {
        findChar('<');
        if (atEnd() || ++pos_ >= s_.size()) return false;
        if (s_[pos_] == '/') break;
        if (s_[pos_] != '!' || ++pos_ + 1 >= s_.size()) return false;
        if (at("--")) {
            pos_ += 2;
            if (!find("-->", false)) return false;
            pos_ += 3;
        } else if (s_[pos_] == '[') {
            if (++pos_ + 8 >= s_.size() || !at("CDATA[")) return false;
            pos_ += 6;
            if (!find("]]>", false)) return false;
            pos_ += 3;
        } else {
            return false;
        }
    }
    ++pos_;
    if (pos_ + tag.size() >= s_.size() || !at(tag)) return false;
    pos_ += tag.size();
    skipSpace();
    if (atEnd() || s_[pos_] != '>') return false;
    ++pos_;
    return true;
}

bool XmlScanner::run(std::string* error) {
    static constexpr std::string_view kScalars[] = {"integer", "real", "true", "false", "string", "key", "data", "date"};
    std::vector<std::string_view> open;  // the elements whose end tag is due, innermost last
    int depth = 0;                       // of the container the next value goes into; 0 before the top one
    bool haveTop = false, hasContent = false;
    while (!atEnd()) {
        skipSpace();
        if (atEnd()) break;
        if (s_[pos_] != '<') return fail(error, "text outside an element");
        if (++pos_ >= s_.size()) return fail(error, "the file ends inside a tag");
        if (s_[pos_] == '?') {
            if (!find("?>", true)) return fail(error, "an unterminated processing instruction");
            pos_ += 2;
            continue;
        }
        if (s_[pos_] == '!') {
            if (!skipSpecial()) return fail(error, "an unterminated or unknown <! construct");
            continue;
        }
        const std::size_t start = pos_;
        findAny(" \r\n\t<>", false);
        if (atEnd()) return fail(error, "the file ends inside a tag");
        std::string_view tag = s_.substr(start, pos_ - start);
        if (s_[pos_] != '>') findAny("<>", true);
        if (atEnd() || s_[pos_] != '>') return fail(error, "a tag without its '>'");
        const bool selfClosing = s_[pos_ - 1] == '/';
        if (selfClosing) tag = tag.substr(0, std::min(tag.size(), pos_ - start - 1));
        ++pos_;

        if (tag == "plist") {
            if (open.empty() && haveTop) return true;  // the reader stops at a second top-level plist
            if (selfClosing) return fail(error, "an empty plist element");
            open.push_back("plist");
            hasContent = false;
            continue;
        }
        if (tag == "/plist") {
            if (!hasContent || open.empty() || open.back() != "plist") return fail(error, "a misplaced </plist>");
            open.pop_back();
            continue;
        }
        hasContent = true;
        if (tag.starts_with('/')) {
            if (open.empty() || open.back() != tag.substr(1)) return fail(error, "an end tag that closes nothing open");
            open.pop_back();
            if (--depth == 0) return true;  // the top-level value is complete; the reader reads no further
            continue;
        }
        const bool container = tag == "dict" || tag == "array";
        if (!container) {
            if (std::find(std::begin(kScalars), std::end(kScalars), tag) == std::end(kScalars))
                return fail(error, "an element of an unknown kind");
            if (!selfClosing && !skipTextContent(tag, tag != "string" && tag != "key"))
                return fail(error, "an element whose text is not closed by its end tag");
        }
        if (!haveTop) {
            haveTop = true;
            if (!container) return true;  // a single value is the whole list
            depth = 1;
        } else if (container && !selfClosing && ++depth > maxDepth_) {
            *error = kTooDeep;
            return false;
        }
        if (container && !selfClosing) open.push_back(tag);
    }
    return true;
}

std::uint64_t readBigEndian(const std::uint8_t* p, std::size_t n) {
    std::uint64_t v = 0;
    for (std::size_t i = 0; i < n; ++i) v = (v << 8) | p[i];
    return v;
}

// A binary property list's trailer and object table, read the way the parser reads them.
class BinaryScanner {
public:
    explicit BinaryScanner(std::span<const std::uint8_t> bytes) : b(bytes) {}

    bool run(int maxDepth, std::string* error) { return readTrailer(error) && walk(maxDepth, error); }

private:
    static bool fail(std::string* error, const char* what) {
        *error = what;
        return false;
    }
    bool readTrailer(std::string* error);
    std::uint64_t offsetOf(std::uint64_t index) const {
        return readBigEndian(b.data() + tableOffset + index * offsetSize, offsetSize);
    }
    // Children of a container object, `container` set; empty for scalars. Sets ok=false when malformed.
    std::vector<std::uint64_t> children(std::uint64_t index, bool& ok, bool& container);
    bool walk(int maxDepth, std::string* error);

    std::span<const std::uint8_t> b;
    std::size_t offsetSize = 0, refSize = 0;
    std::uint64_t count = 0, top = 0, tableOffset = 0;
    // The parser's text accessors abort the program on a NUL inside a text, so such texts are refused here.
    bool nulInText = false;
};

bool BinaryScanner::readTrailer(std::string* error) {
    if (b.size() < 8 + 32) return fail(error, "binary property list is truncated");
    const std::uint8_t* trailer = b.data() + b.size() - 32;
    offsetSize = trailer[6];
    refSize = trailer[7];
    count = readBigEndian(trailer + 8, 8);
    top = readBigEndian(trailer + 16, 8);
    tableOffset = readBigEndian(trailer + 24, 8);
    if (offsetSize < 1 || offsetSize > 8 || refSize < 1 || refSize > 8)
        return fail(error, "binary property list has a bad trailer");
    std::uint64_t tableEnd = b.size() - 32;
    if (count == 0 || top >= count || tableOffset < 8 || tableOffset > tableEnd ||
        count > (tableEnd - tableOffset) / offsetSize)
        return fail(error, "binary property list has a bad offset table");
    return true;
}

std::vector<std::uint64_t> BinaryScanner::children(std::uint64_t index, bool& ok, bool& container) {
    std::vector<std::uint64_t> refs;
    container = false;
    std::uint64_t off = offsetOf(index);
    if (off < 8 || off >= tableOffset) return ok = false, refs;
    std::uint8_t marker = b[off];
    std::uint8_t type = marker >> 4;
    const bool text = type == 0x5 || type == 0x6;  // ASCII, UTF-16
    if (type != 0xA && type != 0xC && type != 0xD && !text) return refs;
    std::uint64_t n = marker & 0x0F, pos = off + 1;
    if (n == 0x0F) {
        // The parser reads a count of 1 << (low nibble) bytes; only 1 to 8 are counts it can hold.
        if (pos >= tableOffset || (b[pos] >> 4) != 0x1 || (b[pos] & 0x0F) > 3) return ok = false, refs;
        std::size_t width = std::size_t{1} << (b[pos] & 0x3);
        if (pos + 1 + width > tableOffset) return ok = false, refs;
        n = readBigEndian(b.data() + pos + 1, width);
        pos += 1 + width;
    }
    if (text) {
        const std::uint64_t unit = type == 0x6 ? 2 : 1;
        if (n > tableOffset || pos + n * unit > tableOffset) return ok = false, refs;
        for (std::uint64_t i = 0; i < n; ++i) {
            if (b[pos + i * unit] == 0 && (unit == 1 || b[pos + i * unit + 1] == 0)) {
                nulInText = true;
                return ok = false, refs;
            }
        }
        return refs;
    }
    container = true;
    std::uint64_t total = type == 0xD ? n * 2 : n;
    if (n > tableOffset || total > (tableOffset - pos) / refSize) return ok = false, refs;
    refs.reserve(total);
    for (std::uint64_t i = 0; i < total; ++i) {
        std::uint64_t ref = readBigEndian(b.data() + pos + i * refSize, refSize);
        if (ref >= count) return ok = false, refs;
        refs.push_back(ref);
    }
    return refs;
}

bool BinaryScanner::walk(int maxDepth, std::string* error) {
    // Iterative depth-first walk over containers only, so that depth means what
    // the tree reader counts: containers within containers. Each finished
    // object remembers its height (containers, scalars 0) and how many values
    // it becomes once every reference is copied. A shared object is walked
    // once, but its height counts again wherever it is referred to: a deep
    // part referred to from deeper down must not pass unseen. An object met
    // again on its own path is a cycle.
    struct Measure {
        int height = -1;  // -1 while on the path
        std::uint64_t values = 0;
    };
    const std::uint64_t maxValues = b.size();
    std::unordered_map<std::uint64_t, Measure> measured;
    struct Frame {
        std::uint64_t index;
        std::vector<std::uint64_t> refs;
        std::size_t next = 0;
        int height = 0;
        std::uint64_t values = 1;
    };
    auto badObject = [&] {
        return fail(error, nulInText ? "a text in the file holds a NUL character" : "binary property list has a bad object");
    };
    std::vector<Frame> stack;
    bool ok = true, container = false;
    auto topRefs = children(top, ok, container);
    if (!ok) return badObject();
    if (!container) return true;
    stack.push_back({top, std::move(topRefs)});
    measured[top] = {};
    while (!stack.empty()) {
        if (static_cast<int>(stack.size()) > maxDepth) return fail(error, kTooDeep);
        Frame& f = stack.back();
        if (f.next < f.refs.size()) {
            std::uint64_t child = f.refs[f.next++];
            auto it = measured.find(child);
            if (it != measured.end()) {
                if (it->second.height < 0) return fail(error, "property list refers to itself");
                if (static_cast<std::uint64_t>(stack.size()) + static_cast<std::uint64_t>(it->second.height) >
                    static_cast<std::uint64_t>(maxDepth))
                    return fail(error, kTooDeep);
                f.height = std::max(f.height, it->second.height);
                f.values += it->second.values;
            } else {
                auto refs = children(child, ok, container);
                if (!ok) return badObject();
                if (container) {
                    measured[child] = {};
                    stack.push_back({child, std::move(refs)});
                } else {
                    measured[child] = {0, 1};
                    f.values += 1;
                }
            }
        } else {
            const Measure done{f.height + 1, f.values};
            measured[f.index] = done;
            stack.pop_back();
            if (!stack.empty()) {
                stack.back().height = std::max(stack.back().height, done.height);
                stack.back().values += done.values;
            }
        }
        if (!stack.empty() && stack.back().values > maxValues)
            return fail(error, "binary property list repeats its parts more often than a store file of its size can hold");
    }
    return true;
}

}  // namespace

bool checkXmlStructure(std::string_view text, int maxDepth, std::string* error) {
    return XmlScanner(text, maxDepth).run(error);
}

bool checkBinaryStructure(std::span<const std::uint8_t> b, int maxDepth, std::string* error) {
    return BinaryScanner(b).run(maxDepth, error);
}

}  // namespace velmorant::platform
