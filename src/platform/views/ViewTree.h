#pragma once

#include "platform/views/View.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

namespace velmorant::platform {

// The fixed tree of named views that an interface description lays out.
// Views are kept in description order, each parent before its children.
class ViewTree {
public:
    // Finds the artwork an image view shows as first loaded, by name.
    using ImageLookup = std::function<ImagePtr(std::string_view name)>;

    // Reads an interface description (JSON); throws std::runtime_error naming
    // the file and what is wrong in it. The lookup finds an image view's own
    // artwork when it is first drawn; without one, image views show only what is set.
    // A file is parsed once while it stays unchanged: later loads copy the tree kept from it.
    static ViewTree loadInterface(const std::filesystem::path& file, const ImageLookup& images = {});
    static ViewTree parseInterface(std::string_view json, const ImageLookup& images = {});

    ViewTree(ViewTree&&) = default;
    ViewTree& operator=(ViewTree&&) = default;

    View* view(std::string_view name);
    const View* view(std::string_view name) const;
    const std::vector<std::unique_ptr<View>>& views() const { return views_; }
    // True when neither the view nor any of its ancestors is hidden.
    bool isShown(const View& view) const;
    // What an image view shows: the image set on it, else its own artwork.
    ImagePtr shownImage(const View& view) const;

private:
    ViewTree() = default;
    // A tree of copies of this one's views, finding artwork with `images`.
    ViewTree copied(const ImageLookup& images) const;
    std::vector<std::unique_ptr<View>> views_;
    ImageLookup images_;
};

}  // namespace velmorant::platform
