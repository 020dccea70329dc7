#include "platform/views/ViewTree.h"

#include <nlohmann/json.hpp>

#include <fstream>
#include <map>
#include <mutex>
#include <sstream>
#include <stdexcept>

namespace velmorant::platform {
namespace {

using json = nlohmann::json;

const std::map<std::string, ViewKind, std::less<>> kKinds = {
    {"container", ViewKind::Container}, {"label", ViewKind::Label},
    {"imageView", ViewKind::ImageView}, {"indicator", ViewKind::Indicator}};

const std::map<std::string, FontWeight, std::less<>> kWeights = {
    {"ultralight", FontWeight::UltraLight}, {"thin", FontWeight::Thin},     {"light", FontWeight::Light},
    {"regular", FontWeight::Regular},       {"medium", FontWeight::Medium}, {"semibold", FontWeight::Semibold},
    {"bold", FontWeight::Bold},             {"heavy", FontWeight::Heavy},   {"black", FontWeight::Black}};

const std::map<std::string, Colour (*)(), std::less<>> kNamedColours = {
    {"black", &Colour::blackColor},         {"white", &Colour::whiteColor},
    {"clear", &Colour::clearColor},         {"darkGray", &Colour::darkGrayColor},
    {"lightGray", &Colour::lightGrayColor}, {"systemGreen", &Colour::systemGreenColor},
    {"systemRed", &Colour::systemRedColor}};

// The parts of a frame that an "autoresizing" list may mark flexible.
const std::map<std::string, bool Autoresizing::*, std::less<>> kFlexibleParts = {
    {"flexibleLeftMargin", &Autoresizing::flexibleLeftMargin},
    {"flexibleWidth", &Autoresizing::flexibleWidth},
    {"flexibleRightMargin", &Autoresizing::flexibleRightMargin},
    {"flexibleTopMargin", &Autoresizing::flexibleTopMargin},
    {"flexibleHeight", &Autoresizing::flexibleHeight},
    {"flexibleBottomMargin", &Autoresizing::flexibleBottomMargin}};

[[noreturn]] void bad(const std::string& view, const std::string& what) {
    throw std::runtime_error("view \"" + view + "\": " + what);
}

Colour colourFrom(const json& j, const std::string& view) {
    if (j.contains("name")) {
        auto it = kNamedColours.find(j.at("name").get<std::string>());
        if (it == kNamedColours.end()) bad(view, "unknown colour name " + j.at("name").dump());
        return it->second();
    }
    return Colour::colorWithHue(j.at("h").get<double>(), j.at("s").get<double>(), j.at("b").get<double>(),
                                j.value("a", 1.0));
}

Autoresizing autoresizingFrom(const json& j, const std::string& view) {
    if (!j.is_array()) bad(view, "autoresizing must be a list such as [\"flexibleWidth\"]");
    Autoresizing mask;
    for (const json& part : j) {
        auto it = part.is_string() ? kFlexibleParts.find(part.get<std::string>()) : kFlexibleParts.end();
        if (it == kFlexibleParts.end()) bad(view, "unknown autoresizing part " + part.dump());
        mask.*(it->second) = true;
    }
    return mask;
}

TextFitting textFittingFrom(const json& v, const std::string& view) {
    TextFitting fitting;
    fitting.numberOfLines = v.value("lines", 1);
    fitting.minimumScaleFactor = v.value("minimumScaleFactor", 1.0);
    if (fitting.numberOfLines < 0) bad(view, "lines must be 0 (any number) or more");
    if (!(fitting.minimumScaleFactor > 0 && fitting.minimumScaleFactor <= 1))
        bad(view, "minimumScaleFactor must be above 0 and at most 1");
    return fitting;
}

// A parsed description and the file's state it was read in.
struct KeptInterface {
    std::filesystem::file_time_type written;
    std::uintmax_t size = 0;
    std::shared_ptr<const ViewTree> tree;
};

// Descriptions parsed in this process, by path: every card reads the same one,
// and parsing it cost about a tenth of a card without a picture.
class KeptInterfaces {
public:
    std::shared_ptr<const ViewTree> find(const std::filesystem::path& file, std::filesystem::file_time_type written,
                                         std::uintmax_t size) {
        std::lock_guard lock(mutex_);
        auto it = kept_.find(file);
        if (it == kept_.end() || it->second.written != written || it->second.size != size) return nullptr;
        return it->second.tree;
    }
    void keep(const std::filesystem::path& file, KeptInterface interface) {
        std::lock_guard lock(mutex_);
        // A process reads one or two descriptions; many paths are tests' own files.
        if (kept_.size() >= kMostKept && !kept_.contains(file)) kept_.clear();
        kept_[file] = std::move(interface);
    }

private:
    static constexpr std::size_t kMostKept = 16;
    std::mutex mutex_;
    std::map<std::filesystem::path, KeptInterface> kept_;
};

KeptInterfaces& keptInterfaces() {
    static KeptInterfaces kept;
    return kept;
}

}  // namespace

ViewTree ViewTree::copied(const ImageLookup& images) const {
    ViewTree tree;
    tree.images_ = images;
    tree.views_.reserve(views_.size());
    for (const auto& view : views_) tree.views_.push_back(std::make_unique<View>(*view));
    return tree;
}

ViewTree ViewTree::parseInterface(std::string_view text, const ImageLookup& images) {
    json doc = json::parse(text.begin(), text.end());
    ViewTree tree;
    tree.images_ = images;
    for (const json& v : doc.at("views")) {
        std::string name = v.at("name").get<std::string>();
        if (tree.view(name)) bad(name, "is described twice");
        auto kind = kKinds.find(v.at("kind").get<std::string>());
        if (kind == kKinds.end()) bad(name, "unknown kind " + v.at("kind").dump());
        auto view = std::make_unique<View>(name, kind->second);
        std::string parent = v.value("parent", "");
        if (!parent.empty() && !tree.view(parent)) bad(name, "parent \"" + parent + "\" is not described before it");
        view->setParent(parent);
        const json& f = v.at("frame");
        if (!f.is_array() || f.size() != 4) bad(name, "frame must be [x, y, width, height]");
        view->setFrame({f[0].get<double>(), f[1].get<double>(), f[2].get<double>(), f[3].get<double>()});
        view->setHidden(v.value("hidden", false));
        if (v.contains("text")) view->setText(v.at("text").get<std::string>());
        if (v.contains("font")) {
            const json& font = v.at("font");
            auto weight = kWeights.find(font.value("weight", std::string("regular")));
            if (weight == kWeights.end()) bad(name, "unknown font weight " + font.at("weight").dump());
            view->setFont(Font{font.at("size").get<double>(), weight->second});
        }
        if (v.contains("textColour")) view->setTextColor(colourFrom(v.at("textColour"), name));
        if (v.contains("backgroundColour")) view->setBackgroundColor(colourFrom(v.at("backgroundColour"), name));
        if (v.contains("cornerRadius")) view->layer().setCornerRadius(v.at("cornerRadius").get<double>());
        if (v.contains("gradient")) {
            // A gradient layer at the back, top to bottom, as the styling code adds them.
            auto gradient = std::make_shared<Layer>("gradient");
            std::vector<Colour> colours;
            for (const json& c : v.at("gradient")) colours.push_back(colourFrom(c, name));
            if (colours.size() < 2) bad(name, "a gradient needs two colours or more");
            gradient->setColors(std::move(colours));
            gradient->setFrame(view->bounds());
            view->layer().insertSublayer(std::move(gradient), 0);
        }
        std::string align = v.value("alignment", std::string("left"));
        view->setAlignment(align == "centre" ? TextAlignment::Centre
                           : align == "right" ? TextAlignment::Right
                                              : TextAlignment::Left);
        if (v.contains("autoresizing")) view->setAutoresizing(autoresizingFrom(v.at("autoresizing"), name));
        view->setTextFitting(textFittingFrom(v, name));
        view->setIsAccessibilityElement(v.value("accessible", true));
        view->setIsHeader(v.value("header", false));
        if (v.contains("image")) view->setImageName(v.at("image").get<std::string>());
        tree.views_.push_back(std::move(view));
    }
    return tree;
}

ViewTree ViewTree::loadInterface(const std::filesystem::path& file, const ImageLookup& images) {
    // Its state taken before it is read: a file changed while it is read is read again next time.
    std::error_code unknown;
    auto written = std::filesystem::last_write_time(file, unknown);
    std::uintmax_t size = unknown ? 0 : std::filesystem::file_size(file, unknown);
    if (!unknown)
        if (auto kept = keptInterfaces().find(file, written, size)) return kept->copied(images);
    std::ifstream in(file);
    if (!in) throw std::runtime_error("interface description " + file.string() + " cannot be opened");
    std::stringstream text;
    text << in.rdbuf();
    ViewTree tree;
    try {
        tree = parseInterface(text.str(), images);
    } catch (const std::exception& e) {
        throw std::runtime_error("interface description " + file.string() + ": " + e.what());
    }
    if (!unknown) keptInterfaces().keep(file, {written, size, std::make_shared<const ViewTree>(tree.copied({}))});
    return tree;
}

View* ViewTree::view(std::string_view name) {
    for (auto& v : views_)
        if (v->name() == name) return v.get();
    return nullptr;
}

ImagePtr ViewTree::shownImage(const View& view) const {
    if (view.image() || view.imageName().empty() || !images_) return view.image();
    return images_(view.imageName());
}

bool ViewTree::isShown(const View& view) const {
    for (const View* v = &view; v; v = v->parent().empty() ? nullptr : this->view(v->parent()))
        if (v->isHidden()) return false;
    return true;
}

const View* ViewTree::view(std::string_view name) const {
    return const_cast<ViewTree*>(this)->view(name);
}

}  // namespace velmorant::platform
