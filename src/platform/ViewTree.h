#pragma once

#include "View.h"

#include <filesystem>
#include <memory>
#include <string_view>
#include <vector>

namespace velmorant::platform {

// The fixed tree of named views that an interface description lays out.
// Views are kept in description order, each parent before its children.
class ViewTree {
public:
    // Reads an interface description (JSON); throws std::runtime_error naming
    // the file and what is wrong in it.
    static ViewTree loadInterface(const std::filesystem::path& file);
    static ViewTree parseInterface(std::string_view json);

    ViewTree(ViewTree&&) = default;
    ViewTree& operator=(ViewTree&&) = default;

    View* view(std::string_view name);
    const View* view(std::string_view name) const;
    const std::vector<std::unique_ptr<View>>& views() const { return views_; }
    // True when neither the view nor any of its ancestors is hidden.
    bool isShown(const View& view) const;

private:
    ViewTree() = default;
    std::vector<std::unique_ptr<View>> views_;
};

}  // namespace velmorant::platform
