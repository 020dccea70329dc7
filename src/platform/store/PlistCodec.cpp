#include "platform/store/PlistCodec.h"

#include "platform/store/detail/PlistHandles.h"
#include "platform/store/detail/PlistStructure.h"
#include "platform/text/Text.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <string_view>

namespace velmorant::platform {
namespace {

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

// The parser hands a date over as whole seconds toward zero and the
// microseconds after them without their sign.
double dateFromParts(std::int32_t sec, std::int32_t usec) { return sec < 0 ? sec - usec / 1e6 : sec + usec / 1e6; }

// A date node for a number of microseconds since the reference date. The
// parser keeps sec + usec / 1e6 in a double and truncates when it reads the
// microseconds back, so the nearest double can read back a microsecond short,
// and every rewrite would move the date back by one more. Then the next
// microsecond is written when it reads back as the date, or as itself: the
// date moves forward by at most one microsecond, once, and stays there.
PlistPtr newDate(long long micros) {
    const auto sec = static_cast<std::int32_t>(micros / 1000000);
    const auto usec = static_cast<std::int32_t>(micros % 1000000);
    auto readBack = [](const PlistPtr& node) {
        std::int32_t readSec = 0, readUsec = 0;
        plist_get_date_val(node.get(), &readSec, &readUsec);
        return std::llround(dateFromParts(readSec, readUsec) * 1e6);
    };
    PlistPtr exact(plist_new_date(sec, usec));
    if (readBack(exact) == micros) return exact;
    const int step = micros < 0 ? -1 : 1;
    PlistPtr next(plist_new_date(sec, usec + step));
    const long long got = readBack(next);
    return got == micros || got == micros + step ? std::move(next) : std::move(exact);
}

// Where in the tree a value sits: keys and indexes from the top. Spelled out
// ("bankDict.list[2]") only for a message.
class TreePath {
public:
    void enterKey(std::string_view key) { steps_.push_back({key, 0, true}); }
    void enterIndex(std::size_t index) { steps_.push_back({{}, index, false}); }
    void leave() { steps_.pop_back(); }
    int depth() const { return static_cast<int>(steps_.size()); }
    bool atTop() const { return steps_.empty(); }

    std::string text() const {
        std::string out;
        for (const Step& s : steps_) {
            if (!s.isKey) out += "[" + std::to_string(s.index) + "]";
            else out += (out.empty() ? "" : ".") + std::string(s.key);
        }
        return out;
    }

private:
    struct Step {
        std::string_view key;
        std::size_t index;
        bool isKey;
    };
    std::vector<Step> steps_;
};

// Turns the parser's tree into values, or names the first thing this system
// cannot keep as it is: a kind no preferences store holds (a keyed-archive
// UID, say), a date beyond what the parser reads, a text that is not UTF-8
// (the phone writes none; no writer could put such bytes back as they were),
// or nesting past the limit. Such a file would be changed by a rewrite, so it
// is refused rather than rewritten without it.
class TreeReader {
public:
    explicit TreeReader(int maxDepth) : maxDepth_(maxDepth) {}

    std::optional<Value> read(plist_t node) {
        Value v = value(node);
        if (problem_) return std::nullopt;
        return v;
    }
    const std::string& problem() const { return *problem_; }

private:
    void refuse(std::string what) {
        if (!problem_) problem_ = std::move(what);
    }
    std::string where() const { return "under \"" + path_.text() + "\""; }

    Value value(plist_t node) {
        if (problem_) return Value();
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
                MallocPtr<char> s;
                plist_get_string_val(node, OutParam(s).get());
                std::string text = s ? s.get() : "";
                if (!isValidUtf8(text)) refuse("the text " + where() + " is not valid UTF-8");
                return Value(std::move(text));
            }
            case PLIST_DATE: {
                std::int32_t sec = 0, usec = 0;
                plist_get_date_val(node, &sec, &usec);
                // Past 32-bit seconds the parser hands over the lowest second (or nonsense microseconds).
                if (sec == std::numeric_limits<std::int32_t>::min() || usec < 0 || usec > 999999)
                    refuse("the date " + where() + " is outside the years 1933 to 2069 that this system reads");
                return Value(Date::fromReference(dateFromParts(sec, usec)));
            }
            case PLIST_DATA: {
                MallocPtr<char> d;
                std::uint64_t n = 0;
                plist_get_data_val(node, OutParam(d).get(), &n);
                const auto* bytes = reinterpret_cast<const std::uint8_t*>(d.get());
                return Value(Data(bytes, bytes + (bytes ? n : 0)));
            }
            case PLIST_ARRAY:
            case PLIST_DICT:
                // Checked on the way down, whatever the checks before the parser let through.
                if (path_.depth() >= maxDepth_) {
                    refuse("property list is nested too deeply");
                    return Value();
                }
                return plist_get_node_type(node) == PLIST_ARRAY ? array(node) : dictionary(node);
            default:
                refuse("the value " + where() + " is of a kind no preferences store holds");
                return Value();
        }
    }

    Value array(plist_t node) {
        Array a;
        const std::uint32_t n = plist_array_get_size(node);
        a.reserve(n);
        for (std::uint32_t i = 0; i < n && !problem_; ++i) {
            path_.enterIndex(i);
            a.push_back(value(plist_array_get_item(node, i)));
            path_.leave();
        }
        return Value(std::move(a));
    }

    Value dictionary(plist_t node) {
        Dictionary d;
        MallocPtr<void> it;
        plist_dict_new_iter(node, OutParam(it).get());
        while (!problem_) {
            MallocPtr<char> key;
            plist_t item = nullptr;
            plist_dict_next_item(node, it.get(), OutParam(key).get(), &item);
            if (!item) break;
            const std::string name = key ? key.get() : "";
            if (!isValidUtf8(name)) {
                refuse(path_.atTop() ? std::string("a key at the top level is not valid UTF-8")
                                     : "a key " + where() + " is not valid UTF-8");
                break;
            }
            path_.enterKey(name);
            d.setObject(value(item), name);
            path_.leave();
        }
        return Value(std::move(d));
    }

    int maxDepth_;
    TreePath path_;
    std::optional<std::string> problem_;
};

// A value as a parser node; none when something in it has no property-list
// form or a date the format cannot hold (said in `error`, with where it is).
PlistPtr toPlist(const Value& value, TreePath& path, std::string* error) {
    auto fail = [&](const std::string& what) {
        if (error) *error = what;
        return nullptr;
    };
    switch (value.kind()) {
        case Value::Kind::Boolean: return PlistPtr(plist_new_bool(value.boolValue()));
        case Value::Kind::Integer: return PlistPtr(plist_new_uint(static_cast<std::uint64_t>(value.integerValue())));
        case Value::Kind::Real: return PlistPtr(plist_new_real(value.doubleValue()));
        case Value::Kind::String: return PlistPtr(plist_new_string(value.string()->c_str()));
        case Value::Kind::Date: {
            // To the microsecond, the precision the parser keeps.
            const double t = value.date()->timeIntervalSinceReferenceDate();
            const double micros = std::round(t * 1e6);
            // Whole seconds toward zero must fit the parser's 32 bits.
            if (!(std::fabs(micros) < 2147483648e6))
                return fail("the date under \"" + path.text() + "\" is outside the years a store file can hold");
            return newDate(static_cast<long long>(micros));
        }
        case Value::Kind::Data: {
            const Data& d = *value.data();
            return PlistPtr(plist_new_data(reinterpret_cast<const char*>(d.data()), d.size()));
        }
        case Value::Kind::Array: {
            PlistPtr a(plist_new_array());
            std::size_t i = 0;
            for (const Value& item : *value.array()) {
                path.enterIndex(i++);
                PlistPtr child = toPlist(item, path, error);
                path.leave();
                if (!child) return nullptr;
                plist_array_append_item(a.get(), child.release());
            }
            return a;
        }
        case Value::Kind::Dictionary: {
            PlistPtr d(plist_new_dict());
            for (const auto& [key, item] : *value.dictionary()) {
                path.enterKey(key);
                PlistPtr child = toPlist(item, path, error);
                path.leave();
                if (!child) return nullptr;
                plist_dict_set_item(d.get(), key.c_str(), child.release());
            }
            return d;
        }
        default: return fail("the value under \"" + path.text() + "\" has no property-list form");
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
    const std::string_view text(data, bytes.size());
    const bool binary = text.starts_with("bplist00");
    if (binary ? !checkBinaryStructure(bytes, kMaxPlistDepth, error)
               : !checkXmlText(text, error) || !checkXmlStructure(text, kMaxPlistDepth, error))
        return std::nullopt;
    PlistPtr root;
    plist_from_memory(data, static_cast<std::uint32_t>(bytes.size()), OutParam(root).get());
    if (!root) {
        *error = binary ? "not a valid binary property list" : "not a valid property list";
        return std::nullopt;
    }
    if (plist_get_node_type(root.get()) != PLIST_DICT) {
        *error = "the top level is not a dictionary";
        return std::nullopt;
    }
    TreeReader reader(kMaxPlistDepth);
    std::optional<Value> v = reader.read(root.get());
    if (!v) {
        *error = reader.problem();
        return std::nullopt;
    }
    return PlistDocument{*v->dictionary(), binary ? PlistFormat::Binary : PlistFormat::Xml};
}

std::optional<std::vector<std::uint8_t>> serialisePlist(const Dictionary& root, PlistFormat format,
                                                        std::string* error) {
    TreePath path;
    PlistPtr node = toPlist(Value(root), path, error);
    if (!node) return std::nullopt;
    std::uint32_t length = 0;
    auto bytesOf = [&](const char* out) {
        const auto* b = reinterpret_cast<const std::uint8_t*>(out);
        return std::vector<std::uint8_t>(b, b + length);
    };
    if (format == PlistFormat::Binary) {
        PlistBinBuffer out;
        plist_to_bin(node.get(), OutParam(out).get(), &length);
        if (out) return bytesOf(out.get());
    } else {
        PlistXmlBuffer out;
        plist_to_xml(node.get(), OutParam(out).get(), &length);
        if (out) return bytesOf(out.get());
    }
    if (error) *error = "the property list could not be written";
    return std::nullopt;
}

}  // namespace velmorant::platform
