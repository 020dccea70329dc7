#include "PlistCodec.h"

#include <plist/plist.h>
#include <unicode/utf8.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <string_view>
#include <unordered_map>

namespace velmorant::platform {
namespace {

struct PlistDeleter {
    void operator()(plist_t p) const { plist_free(p); }
};
using PlistPtr = std::unique_ptr<void, PlistDeleter>;

std::uint64_t readBigEndian(const std::uint8_t* p, std::size_t n) {
    std::uint64_t v = 0;
    for (std::size_t i = 0; i < n; ++i) v = (v << 8) | p[i];
    return v;
}

// Checks a binary property list's object graph for bounds and depth without
// recursion, so a hostile file can neither read out of bounds nor exhaust the
// parser's stack.
bool checkBinaryStructure(std::span<const std::uint8_t> b, std::string* error) {
    auto fail = [&](const char* what) {
        *error = what;
        return false;
    };
    if (b.size() < 8 + 32) return fail("binary property list is truncated");
    const std::uint8_t* trailer = b.data() + b.size() - 32;
    std::size_t offsetSize = trailer[6], refSize = trailer[7];
    std::uint64_t count = readBigEndian(trailer + 8, 8), top = readBigEndian(trailer + 16, 8),
                  tableOffset = readBigEndian(trailer + 24, 8);
    if (offsetSize < 1 || offsetSize > 8 || refSize < 1 || refSize > 8) return fail("binary property list has a bad trailer");
    std::uint64_t tableEnd = b.size() - 32;
    if (count == 0 || top >= count || tableOffset < 8 || tableOffset > tableEnd ||
        count > (tableEnd - tableOffset) / offsetSize)
        return fail("binary property list has a bad offset table");

    auto offsetOf = [&](std::uint64_t index) {
        return readBigEndian(b.data() + tableOffset + index * offsetSize, offsetSize);
    };
    // Children of a container object; empty for scalars. Sets ok=false when malformed.
    // The parser's text accessors abort the program on a NUL inside a text, so such texts are refused here.
    bool nulInText = false;
    auto children = [&](std::uint64_t index, bool& ok) {
        std::vector<std::uint64_t> refs;
        std::uint64_t off = offsetOf(index);
        if (off < 8 || off >= tableOffset) return ok = false, refs;
        std::uint8_t marker = b[off];
        std::uint8_t type = marker >> 4;
        const bool text = type == 0x5 || type == 0x6;  // ASCII, UTF-16
        if (type != 0xA && type != 0xC && type != 0xD && !text) return refs;
        std::uint64_t n = marker & 0x0F, pos = off + 1;
        if (n == 0x0F) {
            if (pos >= tableOffset || (b[pos] >> 4) != 0x1) return ok = false, refs;
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
        std::uint64_t total = type == 0xD ? n * 2 : n;
        if (n > tableOffset || total > (tableOffset - pos) / refSize) return ok = false, refs;
        refs.reserve(total);
        for (std::uint64_t i = 0; i < total; ++i) {
            std::uint64_t ref = readBigEndian(b.data() + pos + i * refSize, refSize);
            if (ref >= count) return ok = false, refs;
            refs.push_back(ref);
        }
        return refs;
    };

    // Iterative depth-first walk with memoised depths; an object met again on
    // its own path is a cycle.
    std::unordered_map<std::uint64_t, int> depth;  // -1 while on the path
    struct Frame {
        std::uint64_t index;
        std::vector<std::uint64_t> refs;
        std::size_t next = 0;
        int deepest = 0;
    };
    std::vector<Frame> stack;
    bool ok = true;
    stack.push_back({top, children(top, ok)});
    depth[top] = -1;
    while (!stack.empty()) {
        if (!ok) return fail(nulInText ? "a text in the file holds a NUL character" : "binary property list has a bad object");
        if (static_cast<int>(stack.size()) > kMaxPlistDepth) return fail("property list is nested too deeply");
        Frame& f = stack.back();
        if (f.next < f.refs.size()) {
            std::uint64_t child = f.refs[f.next++];
            auto it = depth.find(child);
            if (it != depth.end()) {
                if (it->second < 0) return fail("property list refers to itself");
                f.deepest = std::max(f.deepest, it->second);
                continue;
            }
            depth[child] = -1;
            auto refs = children(child, ok);
            stack.push_back({child, std::move(refs)});
            continue;
        }
        int d = f.deepest + 1;
        depth[f.index] = d;
        stack.pop_back();
        if (!stack.empty()) stack.back().deepest = std::max(stack.back().deepest, d);
    }
    return true;
}

// A NUL, raw or as a character reference, is no XML character; the parser
// would pass it into a text and then abort the program on reading it.
bool checkXmlText(std::string_view text, std::string* error) {
    bool nul = text.find('\0') != std::string_view::npos;
    for (std::size_t i = text.find("&#"); !nul && i != std::string_view::npos; i = text.find("&#", i + 2)) {
        std::size_t j = i + 2;
        if (j < text.size() && (text[j] == 'x' || text[j] == 'X')) ++j;
        const std::size_t digits = j;
        while (j < text.size() && text[j] == '0') ++j;
        nul = j > digits && j < text.size() && text[j] == ';';
    }
    if (nul) *error = "a text in the file holds a NUL character";
    return !nul;
}

bool checkXmlDepth(std::string_view text, std::string* error) {
    int depth = 0;
    for (std::size_t i = text.find('<'); i != std::string_view::npos; i = text.find('<', i + 1)) {
        std::string_view rest = text.substr(i + 1);
        bool closing = !rest.empty() && rest[0] == '/';
        if (closing) rest.remove_prefix(1);
        bool container = rest.starts_with("dict") || rest.starts_with("array");
        if (!container) continue;
        std::size_t end = rest.find('>');
        bool selfClosing = end != std::string_view::npos && end > 0 && rest[end - 1] == '/';
        if (closing) --depth;
        else if (!selfClosing && ++depth > kMaxPlistDepth) {
            *error = "property list is nested too deeply";
            return false;
        }
    }
    return true;
}

// The parser hands a date over as whole seconds toward zero and the
// microseconds after them without their sign.
double dateFromParts(std::int32_t sec, std::int32_t usec) { return sec < 0 ? sec - usec / 1e6 : sec + usec / 1e6; }

// A date node for a number of microseconds since the reference date. The
// parser keeps sec + usec / 1e6 in a double and truncates when it reads the
// microseconds back, so the nearest double can read back a microsecond short,
// and every rewrite would move the date back by one more. Then the next
// microsecond is written when it reads back as the date, or as itself: the
// date moves forward by at most one microsecond, once, and stays there.
plist_t newDate(long long micros) {
    const auto sec = static_cast<std::int32_t>(micros / 1000000);
    const auto usec = static_cast<std::int32_t>(micros % 1000000);
    auto readBack = [](plist_t node) {
        std::int32_t readSec = 0, readUsec = 0;
        plist_get_date_val(node, &readSec, &readUsec);
        return std::llround(dateFromParts(readSec, readUsec) * 1e6);
    };
    plist_t exact = plist_new_date(sec, usec);
    if (readBack(exact) == micros) return exact;
    const int step = micros < 0 ? -1 : 1;
    plist_t next = plist_new_date(sec, usec + step);
    const long long got = readBack(next);
    if (got == micros || got == micros + step) {
        plist_free(exact);
        return next;
    }
    plist_free(next);
    return exact;
}

// `unsupported` tells of the first value this system cannot keep as it is: of
// a kind no preferences store holds (a keyed-archive UID, say), or a date
// beyond what the parser reads. It would be dropped or changed by a rewrite,
// so such a file is refused rather than rewritten without it.
Value fromPlist(plist_t node, const std::string& path, std::optional<std::string>& unsupported) {
    switch (plist_get_node_type(node)) {
        case PLIST_BOOLEAN: {
            std::uint8_t b = 0;
            plist_get_bool_val(node, &b);
            return Value(b != 0);
        }
        case PLIST_UINT: {
            std::uint64_t v = 0;
            plist_get_uint_val(node, &v);
            // Negative integers travel as their two's-complement bits.
            return Value(static_cast<long long>(static_cast<std::int64_t>(v)));
        }
        case PLIST_REAL: {
            double d = 0;
            plist_get_real_val(node, &d);
            return Value(d);
        }
        case PLIST_STRING: {
            char* s = nullptr;
            plist_get_string_val(node, &s);
            Value v(std::string(s ? s : ""));
            std::free(s);
            return v;
        }
        case PLIST_DATE: {
            std::int32_t sec = 0, usec = 0;
            plist_get_date_val(node, &sec, &usec);
            // Past 32-bit seconds the parser hands over the lowest second (or nonsense microseconds).
            if ((sec == std::numeric_limits<std::int32_t>::min() || usec < 0 || usec > 999999) && !unsupported)
                unsupported = "the date under \"" + path + "\" is outside the years 1933 to 2069 that this system reads";
            return Value(Date::fromReference(dateFromParts(sec, usec)));
        }
        case PLIST_DATA: {
            char* d = nullptr;
            std::uint64_t n = 0;
            plist_get_data_val(node, &d, &n);
            Data data(reinterpret_cast<std::uint8_t*>(d), reinterpret_cast<std::uint8_t*>(d) + n);
            std::free(d);
            return Value(std::move(data));
        }
        case PLIST_ARRAY: {
            Array a;
            std::uint32_t n = plist_array_get_size(node);
            a.reserve(n);
            for (std::uint32_t i = 0; i < n; ++i)
                a.push_back(fromPlist(plist_array_get_item(node, i), path + "[" + std::to_string(i) + "]", unsupported));
            return Value(std::move(a));
        }
        case PLIST_DICT: {
            Dictionary d;
            plist_dict_iter it = nullptr;
            plist_dict_new_iter(node, &it);
            for (;;) {
                char* key = nullptr;
                plist_t item = nullptr;
                plist_dict_next_item(node, it, &key, &item);
                if (!item) break;
                const std::string name = key ? key : "";
                d.setObject(fromPlist(item, path.empty() ? name : path + "." + name, unsupported), name);
                std::free(key);
            }
            std::free(it);
            return Value(std::move(d));
        }
        default:
            if (!unsupported) unsupported = "the value under \"" + path + "\" is of a kind no preferences store holds";
            return Value();
    }
}

bool isUtf8(std::string_view text) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = static_cast<std::int32_t>(text.size());
    for (std::int32_t i = 0; i < length;) {
        UChar32 c;
        U8_NEXT(bytes, i, length, c);
        if (c < 0) return false;
    }
    return true;
}

// The phone writes only valid UTF-8 text (an ASCII or UTF-16 string in a
// binary file); anything else is damage, and the parser would pass it on as
// bytes that no writer can put back as they were. Names where it is.
std::optional<std::string> invalidText(const Value& value, const std::string& path) {
    if (const std::string* s = value.string()) {
        if (!isUtf8(*s)) return "the text under \"" + path + "\"";
    } else if (const Dictionary* d = value.dictionary()) {
        for (const auto& [key, item] : *d) {
            if (!isUtf8(key)) return path.empty() ? std::string("a key at the top level") : "a key under \"" + path + "\"";
            if (auto bad = invalidText(item, path.empty() ? key : path + "." + key)) return bad;
        }
    } else if (const Array* a = value.array()) {
        for (std::size_t i = 0; i < a->size(); ++i)
            if (auto bad = invalidText((*a)[i], path + "[" + std::to_string(i) + "]")) return bad;
    }
    return std::nullopt;
}

plist_t toPlist(const Value& value, const std::string& path, std::string* error) {
    switch (value.kind()) {
        case Value::Kind::Boolean: return plist_new_bool(value.boolValue());
        case Value::Kind::Integer: return plist_new_uint(static_cast<std::uint64_t>(value.integerValue()));
        case Value::Kind::Real: return plist_new_real(value.doubleValue());
        case Value::Kind::String: return plist_new_string(value.string()->c_str());
        case Value::Kind::Date: {
            // To the microsecond, the precision the parser keeps.
            const double t = value.date()->timeIntervalSinceReferenceDate();
            const double micros = std::round(t * 1e6);
            // Whole seconds toward zero must fit the parser's 32 bits.
            if (!(std::fabs(micros) < 2147483648e6)) {
                if (error) *error = "the date under \"" + path + "\" is outside the years a store file can hold";
                return nullptr;
            }
            return newDate(static_cast<long long>(micros));
        }
        case Value::Kind::Data: {
            const Data& d = *value.data();
            return plist_new_data(reinterpret_cast<const char*>(d.data()), d.size());
        }
        case Value::Kind::Array: {
            plist_t a = plist_new_array();
            std::size_t i = 0;
            for (const Value& item : *value.array()) {
                plist_t child = toPlist(item, path + "[" + std::to_string(i++) + "]", error);
                if (!child) return plist_free(a), nullptr;
                plist_array_append_item(a, child);
            }
            return a;
        }
        case Value::Kind::Dictionary: {
            plist_t d = plist_new_dict();
            for (const auto& [key, item] : *value.dictionary()) {
                plist_t child = toPlist(item, path.empty() ? key : path + "." + key, error);
                if (!child) return plist_free(d), nullptr;
                plist_dict_set_item(d, key.c_str(), child);
            }
            return d;
        }
        default:
            if (error) *error = "the value under \"" + path + "\" has no property-list form";
            return nullptr;
    }
}

}  // namespace

std::optional<PlistDocument> parsePlist(std::span<const std::uint8_t> bytes, std::string* error) {
    std::string local;
    if (!error) error = &local;
    if (bytes.empty()) {
        *error = "the file is empty";
        return std::nullopt;
    }
    if (bytes.size() > kMaxPlistBytes) {
        *error = "the file is larger than " + std::to_string(kMaxPlistBytes >> 20) + " MiB";
        return std::nullopt;
    }
    const char* data = reinterpret_cast<const char*>(bytes.data());
    bool binary = bytes.size() >= 8 && std::memcmp(data, "bplist00", 8) == 0;
    if (binary ? !checkBinaryStructure(bytes, error)
               : !checkXmlText(std::string_view(data, bytes.size()), error) ||
                     !checkXmlDepth(std::string_view(data, bytes.size()), error))
        return std::nullopt;
    plist_t root = nullptr;
    plist_from_memory(data, static_cast<std::uint32_t>(bytes.size()), &root);
    PlistPtr owner(root);
    if (!root) {
        *error = binary ? "not a valid binary property list" : "not a valid property list";
        return std::nullopt;
    }
    if (plist_get_node_type(root) != PLIST_DICT) {
        *error = "the top level is not a dictionary";
        return std::nullopt;
    }
    std::optional<std::string> unsupported;
    Value v = fromPlist(root, "", unsupported);
    if (unsupported) {
        *error = *unsupported;
        return std::nullopt;
    }
    if (auto bad = invalidText(v, "")) {
        *error = *bad + " is not valid UTF-8";
        return std::nullopt;
    }
    return PlistDocument{*v.dictionary(), binary ? PlistFormat::Binary : PlistFormat::Xml};
}

std::optional<std::vector<std::uint8_t>> serialisePlist(const Dictionary& root, PlistFormat format,
                                                        std::string* error) {
    PlistPtr node(toPlist(Value(root), "", error));
    if (!node) return std::nullopt;
    char* out = nullptr;
    std::uint32_t length = 0;
    if (format == PlistFormat::Binary) plist_to_bin(node.get(), &out, &length);
    else plist_to_xml(node.get(), &out, &length);
    if (!out) {
        if (error) *error = "the property list could not be written";
        return std::nullopt;
    }
    std::vector<std::uint8_t> bytes(out, out + length);
    if (format == PlistFormat::Binary) plist_to_bin_free(out);
    else plist_to_xml_free(out);
    return bytes;
}

}  // namespace velmorant::platform
