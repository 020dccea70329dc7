#include "Program.h"

#include "Arguments.h"
#include "CallRegistry.h"
#include "DemoData.h"
#include "Gallery.h"
#include "Help.h"
#include "ReviewCommands.h"
#include "IsoDate.h"
#include "PicturesAhead.h"
#include "SnippetCard.h"
#include "Serve.h"
#include "detail/ValueJson.h"
#include "platform/graphics/BitmapMemory.h"
#include "platform/graphics/Image.h"
#include "platform/graphics/LayerStore.h"

#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>
#include <thread>

namespace velmorant::cli {
namespace {

namespace fs = std::filesystem;
using json = nlohmann::json;

struct CommandLine {
    std::string command;
    std::vector<std::string> positional;
    std::map<std::string, std::string> options;
    bool help = false;
    bool version = false;
};

// Options that take a value, and the commands that accept each.
const std::map<std::string, std::vector<std::string>> kOptions = {
    {"--prefs", {"show", "call", "demo", "gallery", "serve"}}, {"--now", {"show", "call", "demo", "gallery"}},
    {"--tz", {"show", "call", "demo", "gallery"}},    {"--locale", {"show", "call", "demo", "gallery"}},
    {"--scale", {"show", "call", "demo", "gallery"}}, {"--width", {"show", "gallery"}},
    {"--png", {"show"}},                   {"--images", {"show", "call"}},
    {"--against", {"gallery"}},            {"--threshold", {"gallery", "review", "accept"}},
    {"--allowed-pixels", {"gallery", "review", "accept"}},
    {"--port", {"serve"}},                 {"--bind", {"serve"}},          {"--workers", {"serve"}},
    {"--body-memory", {"serve"}},
};

CommandLine parse(const std::vector<std::string>& args) {
    CommandLine line;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg == "--help" || arg == "-h") {
            line.help = true;
        } else if (arg == "--version") {
            line.version = true;
        } else if (arg.starts_with("--")) {
            std::string name = arg, value;
            bool inlineValue = false;
            if (auto eq = arg.find('='); eq != std::string::npos) {
                name = arg.substr(0, eq);
                value = arg.substr(eq + 1);
                inlineValue = true;
            }
            if (!kOptions.contains(name)) throw UsageError("unknown option " + name + " (see --help)");
            if (!inlineValue) {
                if (i + 1 >= args.size()) throw UsageError("option " + name + " needs a value");
                value = args[++i];
            }
            line.options[name] = value;
        } else if (line.command.empty()) {
            line.command = arg;
        } else {
            line.positional.push_back(arg);
        }
    }
    if (!line.command.empty() && !helpText(line.command).empty()) {
        for (const auto& [name, value] : line.options) {
            const auto& allowed = kOptions.at(name);
            if (std::find(allowed.begin(), allowed.end(), line.command) == allowed.end())
                throw UsageError("option " + name + " does not apply to " + line.command);
        }
    }
    return line;
}

std::optional<std::string> option(const CommandLine& line, const std::string& name) {
    auto it = line.options.find(name);
    if (it == line.options.end()) return std::nullopt;
    return it->second;
}

// The user's locale from the environment, as the C library names it (de_DE.UTF-8).
std::string environmentLocale() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(name);
        if (!value || !*value) continue;
        std::string id(value);
        id = id.substr(0, id.find_first_of(".@"));
        if (id == "C" || id == "POSIX" || id.empty()) break;
        return id;
    }
    return "en_US";
}

void checkReadableFolder(const fs::path& dir) {
    std::error_code ec;
    if (!fs::exists(dir, ec)) throw UsageError("--prefs " + dir.string() + ": no such folder");
    if (!fs::is_directory(dir, ec)) throw UsageError("--prefs " + dir.string() + ": not a folder");
    if (::access(dir.c_str(), R_OK | X_OK) != 0) throw UsageError("--prefs " + dir.string() + ": cannot be read");
}

platform::PlatformOptions platformOptions(const CommandLine& line, bool createPrefs) {
    platform::PlatformOptions options;
    options.timeZoneId = option(line, "--tz").value_or("");
    options.localeId = option(line, "--locale").value_or(environmentLocale());
    if (auto scale = option(line, "--scale")) options.scale = readScale(*scale);
    if (auto prefs = option(line, "--prefs")) {
        fs::path dir(*prefs);
        if (createPrefs) {
            std::error_code ec;
            fs::create_directories(dir, ec);
            if (ec) throw UsageError("--prefs " + dir.string() + ": cannot be created (" + ec.message() + ")");
            if (::access(dir.c_str(), W_OK) != 0) throw UsageError("--prefs " + dir.string() + ": cannot be written");
        }
        checkReadableFolder(dir);
        options.preferencesDir = dir;
    }
    return options;
}

// Makes the platform; --now is read in the time zone in force.
std::unique_ptr<platform::Platform> makePlatform(const CommandLine& line, bool createPrefs = false,
                                                 platform::Diagnostics::Sink diagnostics = {}) {
    std::unique_ptr<platform::Platform> platform;
    try {
        platform::PlatformOptions options = platformOptions(line, createPrefs);
        options.diagnostics = std::move(diagnostics);
        platform = std::make_unique<platform::Platform>(std::move(options));
    } catch (const std::invalid_argument& e) {
        throw UsageError(e.what());
    }
    if (auto now = option(line, "--now")) {
        auto date = parseIsoDate(*now, platform->timeZone());
        if (!date) throw UsageError("--now must be an ISO 8601 date such as 2024-03-05T22:10:00, not \"" + *now + "\"");
        platform->setNow(*date);
    } else {
        // One instant for the whole run, so the demo night and every snippet agree on the day.
        platform->setNow(platform->now());
    }
    if (!option(line, "--prefs")) installDemoStores(*platform);
    return platform;
}

std::string listOperations(const CallRegistry& registry, const std::string& className) {
    std::string text = className + " operations:\n";
    for (const Operation* op : registry.operationsOf(className)) {
        text += "  " + op->selector;
        for (ParamType p : op->params) text += " <" + std::string(paramTypeName(p)) + ">";
        text += "\n";
    }
    return text;
}

int runCall(const CommandLine& line, std::ostream& out) {
    CallRegistry registry = makeCallRegistry();
    auto classes = registry.classNames();
    std::string known;
    for (const auto& c : classes) known += (known.empty() ? "" : ", ") + c;
    if (line.positional.empty()) throw UsageError("call needs CLASS.OPERATION (classes: " + known + ")");
    const std::string& target = line.positional[0];
    auto dot = target.find('.');
    std::string className = target.substr(0, dot);
    if (!registry.hasClass(className)) throw UsageError("unknown class \"" + className + "\" (classes: " + known + ")");
    if (line.help && dot == std::string::npos) {
        out << listOperations(registry, className);
        return 0;
    }
    if (dot == std::string::npos) throw UsageError("call needs CLASS.OPERATION, not \"" + target + "\"");
    std::string selector = target.substr(dot + 1);
    const Operation* op = registry.find(className, selector);
    if (auto named = registry.candidates(className, selector); !op && named.size() > 1) {
        std::string names;
        for (const Operation* candidate : named) names += (names.empty() ? "" : ", ") + candidate->selector;
        throw UsageError("operation \"" + selector + "\" of " + className + " is ambiguous: name one of " + names);
    }
    if (!op) throw UsageError("unknown operation \"" + selector + "\" of " + className + " (see `call " + className + " --help`)");
    auto platform = makePlatform(line);
    std::vector<std::string> args(line.positional.begin() + 1, line.positional.end());
    CallArgs callArgs = readArguments(*op, args, *platform);
    // Every image of the result goes to DIR/NAME.png: a record's by its key,
    // an image result by the operation's name. The folder is made for the
    // first image, so a call refused for bad input leaves nothing behind.
    ImageWriter writer;
    if (auto dir = option(line, "--images")) {
        writer = [dir = fs::path(*dir)](const platform::Image& image, const std::string& hint) -> std::optional<std::string> {
            std::error_code ec;
            fs::create_directories(dir, ec);
            if (ec || !fs::is_directory(dir)) throw UsageError("--images " + dir.string() + ": cannot be created");
            fs::path file = dir / (hint + ".png");
            std::string error;
            if (!image.writePng(file, &error)) throw std::runtime_error("cannot write " + file.string() + ": " + error);
            return file.string();
        };
    }
    std::string resultName = op->selector.substr(0, op->selector.find(':'));
    out << toJson(op->invoke(*platform, callArgs), writer, resultName).dump() << '\n';
    return 0;
}

int runShow(const CommandLine& line, std::ostream& out) {
    if (line.positional.size() != 1)
        throw UsageError("show needs exactly one INTENT, such as SleepSpO2Intent (see `show --help`)");
    double width = 390;
    if (auto w = option(line, "--width")) width = readWidth(*w);
    // Checked before anything is written, so a picture too large to draw leaves no files behind.
    auto scale = option(line, "--scale");
    checkPictureSize(width, scale ? readScale(*scale) : platform::PlatformOptions{}.scale);
    std::optional<fs::path> imagesDir, png;
    if (auto file = option(line, "--png")) png = *file;
    auto platform = makePlatform(line);
    // One card is drawn and the process ends: each of its large bitmaps is touched first and only once.
    platform::setHugePageBitmaps(true);
    // The pictures' data-independent layers come from the cache when an earlier run kept them.
    if (fs::path folder = platform::LayerStore::defaultFolder(); !folder.empty())
        platform->layers().keepOnDisk(std::make_unique<platform::LayerStore>(folder, platform->resourceDir()));
    // With two cores or more, the card's pictures are drawn beside its labels, and
    // the fonts are set up while the stores are read: the time to one card is what counts.
    std::optional<PicturesAhead> ahead;
    if (png && std::thread::hardware_concurrency() > 1) ahead.emplace(*platform);
    if (auto dir = option(line, "--images")) {
        imagesDir = *dir;
        std::error_code ec;
        fs::create_directories(*imagesDir, ec);
        if (ec || !fs::is_directory(*imagesDir)) throw UsageError("--images " + *dir + ": cannot be created");
    }

    ImageWriter writer;
    if (imagesDir) {
        writer = [&](const platform::Image& image, const std::string& hint) -> std::optional<std::string> {
            fs::path file = *imagesDir / (hint + ".png");
            std::string error;
            if (!image.writePng(file, &error)) throw std::runtime_error("cannot write " + file.string() + ": " + error);
            return file.string();
        };
    }
    SnippetOptions snippet{.width = width, .pngFile = png.value_or(fs::path()), .images = writer};
    if (ahead) snippet.picturesAhead = &*ahead;
    out << showSnippet(*platform, line.positional[0], snippet).record << '\n';
    return 0;
}

int runDemo(const CommandLine& line, std::ostream& out) {
    if (!option(line, "--prefs")) throw UsageError("demo needs --prefs DIR, the folder to write the stores into");
    if (!line.positional.empty()) throw UsageError("demo takes no arguments, not \"" + line.positional[0] + "\"");
    CommandLine withPrefs = line;
    auto platform = makePlatform(withPrefs, true);
    installDemoStores(*platform);
    out << "wrote the demo stores into " << platform->preferencesDir().string() << '\n';
    return 0;
}

int runGallery(const CommandLine& line, std::ostream& out, std::ostream& err) {
    if (line.positional.size() != 1)
        throw UsageError("gallery needs exactly one DIR, the folder to write the gallery into (see `gallery --help`)");
    GalleryOptions gallery;
    gallery.dir = line.positional[0];
    if (auto w = option(line, "--width")) gallery.width = readWidth(*w);
    auto scale = option(line, "--scale");
    checkPictureSize(gallery.width, scale ? readScale(*scale) : platform::PlatformOptions{}.scale);
    checkGalleryFolder(gallery.dir);
    // Drawn from stores in memory: the widget mirrors and the empty state
    // change them, and the files named by --prefs are only read.
    CommandLine inMemory = line;
    inMemory.options.erase("--prefs");
    // With no files to report on, all it could say is the widget bedtime
    // request's log line, which would break up the progress lines.
    auto platform = makePlatform(inMemory, false, [](std::string_view) {});
    if (auto prefs = option(line, "--prefs")) {
        copyStores(*makePlatform(line), *platform);
        gallery.source = "the stores in " + *prefs;
    }
    auto against = option(line, "--against");
    if (!against && (option(line, "--threshold") || option(line, "--allowed-pixels")))
        throw UsageError("--threshold and --allowed-pixels need --against BASELINE");
    review::ReviewOptions reviewOptions = readReviewOptions(option(line, "--threshold"), option(line, "--allowed-pixels"));
    // The baseline is read whole before drawing, so a bad one leaves DIR as it was.
    std::optional<review::GalleryContents> baseline;
    if (against)
        baseline = readBaselineFor(*against, gallery.dir.string(),
                                   {.options = {platform->screenScale(), gallery.width, platform->localeId()}});
    out << writeGallery(*platform, gallery, err).string() << '\n';
    return baseline ? reviewDrawnGallery(gallery.dir, *baseline, reviewOptions, out) : 0;
}

}  // namespace

int runProgram(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
    try {
        CommandLine line = parse(args);
        if (line.version) {
            out << "velmorant-snippet " << VELMORANT_VERSION << '\n';
            return 0;
        }
        if (line.command.empty()) {
            if (line.help) {
                out << helpText("");
                return 0;
            }
            throw UsageError("no command given (commands: show, call, demo, gallery, review, accept, serve; see --help)");
        }
        if (helpText(line.command).empty())
            throw UsageError("unknown command \"" + line.command + "\" (commands: show, call, demo, gallery, review, accept, serve; see --help)");
        if (line.help && !(line.command == "call" && !line.positional.empty())) {
            out << helpText(line.command);
            return 0;
        }
        if (line.command == "show") return runShow(line, out);
        if (line.command == "call") return runCall(line, out);
        if (line.command == "gallery") return runGallery(line, out, err);
        if (line.command == "review" || line.command == "accept") {
            auto options = readReviewOptions(option(line, "--threshold"), option(line, "--allowed-pixels"));
            return (line.command == "review" ? runReview : runAccept)(line.positional, options, out);
        }
        if (line.command == "serve") {
            if (auto prefs = option(line, "--prefs")) checkReadableFolder(*prefs);
            return runServe(line.options, line.positional, out);
        }
        return runDemo(line, out);
    } catch (const UsageError& e) {
        err << "velmorant-snippet: " << e.what() << '\n';
        return 2;
    } catch (const std::exception& e) {
        err << "velmorant-snippet: " << e.what() << '\n';
        return 1;
    }
}

}  // namespace velmorant::cli
