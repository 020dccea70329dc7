#include "StoreMutator.h"

#include "StoreHarness.h"

#include "platform/store/detail/PlistHandles.h"
#include "platform/store/detail/PlistStructure.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <string_view>

namespace velmorant::fuzz {
namespace {

using platform::MallocPtr;
using platform::OutParam;
using platform::PlistPtr;

// Names the store reads, so that an edit lands where the code looks.
constexpr const char* kKeys[] = {"bankDict", "watchTrackDict", "velmorantConfig", "cachedSleepBank", "spO2Dict",
                                 "readyDict", "key", "averageSpO2", "nightHour", "rawRingRating", "Hue1", "darkTheme6"};

class Mutation {
public:
    explicit Mutation(std::mt19937& random) : random_(random) {}

    std::size_t below(std::size_t n) { return n == 0 ? 0 : std::uniform_int_distribution<std::size_t>(0, n - 1)(random_); }
    bool chance(int percent) { return below(100) < static_cast<std::size_t>(percent); }

    // Edits the tree under `root` (a container; the root itself stays).
    void editTree(plist_t root) {
        const std::size_t edits = 1 + below(3);
        for (std::size_t i = 0; i < edits; ++i) {
            std::vector<Slot> slots;
            collect(root, slots);
            if (slots.empty()) {
                PlistPtr child(plist_new_array());
                if (plist_get_node_type(root) == PLIST_ARRAY) plist_array_append_item(root, child.release());
                else plist_dict_set_item(root, kKeys[below(std::size(kKeys))], child.release());
                continue;
            }
            const Slot& slot = slots[below(slots.size())];
            const std::size_t op = below(100);
            if (op < 25) wrap(slot, 40 + below(60));  // around the nesting limit
            else if (op < 45) wrap(slot, 1 + below(8));
            else if (op < 65) duplicate(slots);
            else if (op < 85) replace(slot, otherKind(slot.node));
            else remove(slot);
        }
    }

    // Adds markup that the parser skips or reads as the same tags.
    std::string editXml(std::string xml) {
        const std::size_t edits = 1 + below(2);
        for (std::size_t i = 0; i < edits; ++i) xml = chance(70) ? hideCopy(std::move(xml)) : oddTag(std::move(xml));
        return xml;
    }

private:
    struct Slot {
        plist_t node;
        plist_t parent;
        std::uint32_t index;  // in an array parent
        std::string key;      // in a dictionary parent
    };

    // Every node below `root`, without recursion.
    void collect(plist_t root, std::vector<Slot>& slots) {
        std::vector<plist_t> pending{root};
        while (!pending.empty() && slots.size() < 4096) {
            plist_t parent = pending.back();
            pending.pop_back();
            if (plist_get_node_type(parent) == PLIST_ARRAY) {
                for (std::uint32_t i = 0; i < plist_array_get_size(parent); ++i) {
                    plist_t child = plist_array_get_item(parent, i);
                    slots.push_back({child, parent, i, {}});
                    pending.push_back(child);
                }
            } else if (plist_get_node_type(parent) == PLIST_DICT) {
                MallocPtr<void> it;
                plist_dict_new_iter(parent, OutParam(it).get());
                for (;;) {
                    MallocPtr<char> key;
                    plist_t child = nullptr;
                    plist_dict_next_item(parent, it.get(), OutParam(key).get(), &child);
                    if (!child) break;
                    slots.push_back({child, parent, 0, key ? key.get() : ""});
                    pending.push_back(child);
                }
            }
        }
    }

    // Puts `node` where the slot's node is; the old node is freed.
    void replace(const Slot& slot, PlistPtr node) {
        if (plist_get_node_type(slot.parent) == PLIST_ARRAY) plist_array_set_item(slot.parent, node.release(), slot.index);
        else plist_dict_set_item(slot.parent, slot.key.c_str(), node.release());
    }

    void wrap(const Slot& slot, std::size_t levels) {
        PlistPtr inner(plist_copy(slot.node));
        for (std::size_t i = 0; i < levels; ++i) {
            PlistPtr outer(chance(70) ? plist_new_array() : plist_new_dict());
            if (plist_get_node_type(outer.get()) == PLIST_ARRAY) plist_array_append_item(outer.get(), inner.release());
            else plist_dict_set_item(outer.get(), kKeys[below(std::size(kKeys))], inner.release());
            inner = std::move(outer);
        }
        replace(slot, std::move(inner));
    }

    void duplicate(const std::vector<Slot>& slots) {
        const Slot& from = slots[below(slots.size())];
        std::vector<const Slot*> containers;
        for (const Slot& s : slots)
            if (plist_get_node_type(s.node) == PLIST_ARRAY || plist_get_node_type(s.node) == PLIST_DICT) containers.push_back(&s);
        plist_t into = containers.empty() ? from.parent : containers[below(containers.size())]->node;
        PlistPtr copy(plist_copy(from.node));
        if (plist_get_node_type(into) == PLIST_ARRAY) plist_array_append_item(into, copy.release());
        else plist_dict_set_item(into, kKeys[below(std::size(kKeys))], copy.release());
    }

    void remove(const Slot& slot) {
        if (plist_get_node_type(slot.parent) == PLIST_ARRAY) plist_array_remove_item(slot.parent, slot.index);
        else plist_dict_remove_item(slot.parent, slot.key.c_str());
    }

    PlistPtr otherKind(plist_t node) {
        const double extremes[] = {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
                                   -1e300, 3.5e38, -1, 0, 95.5};
        double number = 0;
        if (plist_get_node_type(node) == PLIST_REAL) plist_get_real_val(node, &number);
        switch (below(8)) {
            case 0: return PlistPtr(plist_new_string(chance(50) ? std::to_string(number).c_str() : "0.82|1.05|0.96"));
            case 1: return PlistPtr(plist_new_real(extremes[below(std::size(extremes))]));
            case 2: return PlistPtr(plist_new_uint(chance(50) ? 0 : std::numeric_limits<std::uint64_t>::max()));
            case 3: return PlistPtr(plist_new_bool(chance(50)));
            case 4: return PlistPtr(plist_new_date(static_cast<std::int32_t>(below(1u << 31)) - (1 << 30), 0));
            case 5: return PlistPtr(plist_new_data("\x00\xFF", 2));
            case 6: return PlistPtr(plist_new_array());
            default: return PlistPtr(plist_new_dict());
        }
    }

    // A run of the document's own tags inside markup that the parser skips
    // as a whole, put somewhere before them, so that they hide from a count
    // of tags (in a deep document most tags are its nesting).
    std::string hideCopy(std::string xml) {
        std::vector<std::size_t> tags;
        for (std::size_t i = xml.find('<'); i != std::string::npos && tags.size() < 100000; i = xml.find('<', i + 1))
            tags.push_back(i);
        if (tags.size() < 2) return xml;
        const std::size_t first = 1 + below(tags.size() - 1);
        const std::size_t last = std::min(tags.size() - 1, first + 1 + below(300));
        std::string copy = xml.substr(tags[first], tags[last] - tags[first]);
        const std::size_t at = tags[below(first)];  // before a tag that comes before the copied ones
        struct Form {
            const char* open;
            const char* close;
        };
        static constexpr Form kForms[] = {{"<!--", "-->"}, {"<?velmorant ", "?>"}, {"<?velmorant \"?>\" ", "?>"},
                                          {"<string><![CDATA[", "]]></string>"}, {"<string>x<!--", "--></string>"}};
        if (chance(20)) {
            // Before the top element, as an internal subset.
            const std::size_t plist = xml.find("<plist");
            if (plist != std::string::npos && copy.find("]>") == std::string::npos)
                return xml.insert(plist, "<!DOCTYPE plist [" + copy + "]>\n");
        }
        const Form& form = kForms[below(std::size(kForms))];
        if (copy.find(std::string_view(form.close).substr(0, 3)) != std::string::npos) return xml;
        return xml.insert(at, form.open + copy + form.close);
    }

    // An opening or end tag written in another form the parser also reads.
    std::string oddTag(std::string xml) {
        static constexpr const char* kTags[] = {"<array>", "<dict>", "</array>", "</dict>"};
        static constexpr const char* kForms[] = {"<array a=\"/>\">", "<array\n>", "<array x='1' >", "<dict a=\"/>\">",
                                                 "<dict\t>", "</array >", "</dict\n>", "<array/>", "<dict/>"};
        const std::string tag = kTags[below(std::size(kTags))];
        std::vector<std::size_t> at;
        for (std::size_t i = xml.find(tag); i != std::string::npos && at.size() < 100000; i = xml.find(tag, i + 1)) at.push_back(i);
        if (at.empty()) return xml;
        return xml.replace(at[below(at.size())], tag.size(), kForms[below(std::size(kForms))]);
    }

    std::mt19937& random_;
};

std::vector<std::uint8_t> bytesOf(std::string_view s) { return {s.begin(), s.end()}; }

// The writer's line breaks and tabs after each tag, dropped: deep nesting
// would otherwise grow the input by its depth on every line.
std::string withoutIndentation(std::string_view xml) {
    std::string out;
    out.reserve(xml.size());
    for (std::size_t i = 0; i < xml.size(); ++i) {
        out += xml[i];
        if (xml[i] == '>')
            while (i + 1 < xml.size() && (xml[i + 1] == '\n' || xml[i + 1] == '\t')) ++i;
    }
    return out;
}

}  // namespace

std::optional<std::vector<std::uint8_t>> mutateStoreInput(std::span<const std::uint8_t> input, std::mt19937& random) {
    Mutation m(random);
    StoreInput stores = decodeInput(input);
    std::vector<std::uint8_t>& part = stores.standard.empty() || m.chance(75) ? stores.shared : stores.standard;
    if (part.empty()) return std::nullopt;

    // The mutator parses what the fuzzer made: deeper than the store reader
    // allows, so that it can build past the limit, but never what would
    // exhaust the parser.
    constexpr int kMutableDepth = 400;
    std::string refused;
    const std::string_view text(reinterpret_cast<const char*>(part.data()), part.size());
    if (text.find('\0') != std::string_view::npos && !text.starts_with("bplist00")) return std::nullopt;
    if (text.starts_with("bplist00") ? !platform::checkBinaryStructure(part, kMutableDepth, &refused)
                                     : !platform::checkXmlStructure(text, kMutableDepth, &refused))
        return std::nullopt;

    PlistPtr root;
    plist_from_memory(reinterpret_cast<const char*>(part.data()), static_cast<std::uint32_t>(part.size()), OutParam(root).get());
    if (!root || (plist_get_node_type(root.get()) != PLIST_DICT && plist_get_node_type(root.get()) != PLIST_ARRAY))
        return std::nullopt;
    m.editTree(root.get());

    std::uint32_t length = 0;
    if (m.chance(40)) {
        platform::PlistBinBuffer out;
        plist_to_bin(root.get(), OutParam(out).get(), &length);
        if (!out) return std::nullopt;
        part = bytesOf({out.get(), length});
    } else {
        platform::PlistXmlBuffer out;
        plist_to_xml(root.get(), OutParam(out).get(), &length);
        if (!out) return std::nullopt;
        std::string xml = withoutIndentation({out.get(), length});
        part = bytesOf(m.chance(70) ? m.editXml(std::move(xml)) : xml);
    }
    return encodeInput(stores);
}

}  // namespace velmorant::fuzz
