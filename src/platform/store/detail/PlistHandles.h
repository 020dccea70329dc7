#pragma once

// Owners for what libplist hands out: nodes, the buffers it writes, and the
// malloc'd texts and iterators of its accessors. Each is released exactly
// once, with the function libplist documents for it.

#include <plist/plist.h>

#include <cstdlib>
#include <memory>

namespace velmorant::platform {

struct PlistNodeRelease {
    void operator()(void* node) const noexcept { plist_free(node); }
};
struct PlistXmlRelease {
    void operator()(char* text) const noexcept { plist_to_xml_free(text); }
};
struct PlistBinRelease {
    void operator()(char* bytes) const noexcept { plist_to_bin_free(bytes); }
};
struct MallocRelease {
    void operator()(void* block) const noexcept { std::free(block); }
};

// A node and its subtree; release() when a container takes it over.
using PlistPtr = std::unique_ptr<void, PlistNodeRelease>;
using PlistXmlBuffer = std::unique_ptr<char, PlistXmlRelease>;
using PlistBinBuffer = std::unique_ptr<char, PlistBinRelease>;
// A text, data copy or dictionary iterator that the accessor malloc'd.
template <typename T>
using MallocPtr = std::unique_ptr<T, MallocRelease>;

// Fills a raw `T*` out-parameter and hands it to its owner afterwards:
// `plist_get_string_val(node, OutParam(text).get())`.
template <typename Owner>
class OutParam {
public:
    using Raw = typename Owner::pointer;
    explicit OutParam(Owner& owner) : owner_(owner) {}
    ~OutParam() { owner_.reset(raw_); }
    OutParam(const OutParam&) = delete;
    OutParam& operator=(const OutParam&) = delete;
    Raw* get() { return &raw_; }

private:
    Owner& owner_;
    Raw raw_ = nullptr;
};

}  // namespace velmorant::platform
