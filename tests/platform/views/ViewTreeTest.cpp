#include "platform/views/ViewTree.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

using namespace velmorant::platform;

namespace {

// A description of one label with a gradient behind it, its text given.
std::string described(const std::string& text) {
    return R"({"views": [{"name": "v", "kind": "label", "frame": [0, 0, 10, 10], "text": ")" + text +
           R"(", "gradient": [{"name": "black"}, {"name": "white"}]}]})";
}

class KeptInterfaceFile : public testing::Test {
protected:
    std::filesystem::path file = std::filesystem::temp_directory_path() /
                                 ("velmorant-interface-" + std::to_string(::getpid()) + ".json");
    void write(const std::string& text) {
        std::ofstream(file, std::ios::trunc) << text;
    }
    void TearDown() override { std::filesystem::remove(file); }
};

TEST_F(KeptInterfaceFile, ALoadedTreeChangedByItsCardLeavesTheNextLoadAsDescribed) {
    write(described("first"));
    {
        ViewTree tree = ViewTree::loadInterface(file);
        View& v = *tree.view("v");
        v.setText("changed");
        v.setHidden(true);
        // Restyled in place, as a shared sublayer would pass the change on.
        v.layer().sublayers().front()->setColors({Colour::systemRedColor(), Colour::systemGreenColor()});
    }
    ViewTree again = ViewTree::loadInterface(file);
    const View& v = *again.view("v");
    EXPECT_EQ(v.text(), "first");
    EXPECT_FALSE(v.isHidden());
    ASSERT_EQ(v.layer().sublayers().size(), 1u);
    EXPECT_EQ(v.layer().sublayers().front()->colors().front().rgba().r, 0);
}

TEST_F(KeptInterfaceFile, AChangedFileIsReadAgain) {
    using namespace std::chrono_literals;
    // Rewritten with another length; with the same length a second later; then gone.
    const struct {
        std::string text;
        bool sameLength;
    } rewrites[] = {{"a longer text", false}, {"a longer txet", true}};
    write(described("first"));
    EXPECT_EQ(ViewTree::loadInterface(file).view("v")->text(), "first");
    for (const auto& [text, sameLength] : rewrites) {
        auto before = std::filesystem::last_write_time(file);
        write(described(text));
        if (sameLength) std::filesystem::last_write_time(file, before + 1s);
        EXPECT_EQ(ViewTree::loadInterface(file).view("v")->text(), text);
    }
    std::filesystem::remove(file);
    EXPECT_THROW(ViewTree::loadInterface(file), std::runtime_error);
}

}  // namespace
