// Every operation `call` knows and `show` for every intent, on good, empty,
// wrongly typed and damaged stores, with typical and then hostile arguments:
// each must answer with JSON (exit 0) or refuse in one line (exit 2), in time.
// The operations come from the registry and the intents from the intent
// list, so whatever is added later is swept too.
#include "CallGuard.h"
#include "RunProgram.h"

#include "cli/CallRegistry.h"
#include "cli/detail/ValueJson.h"
#include "demo/DemoData.h"
#include "intents/Intents.h"
#include "platform/graphics/Canvas.h"

#include <cmath>
#include <ctime>
#include <limits>
#include <map>

namespace {

using namespace velmorant;
using intents::kIntentTypeNames;
using cli::ParamType;
using platform::Dictionary;
using platform::Value;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif
// Processor seconds per call: the largest picture takes about two; the
// sanitized debug build runs several times slower.
constexpr unsigned kSecondsPerCall = kSanitized ? 30 : 5;

const std::vector<std::string> kPinned = {"--tz", "Europe/London", "--now", "2024-03-05T07:30:00"};

struct Sweep {
    CallGuard guard{kSecondsPerCall};
    int calls = 0;
    double slowest = 0;
    std::string slowestCall;

    // Runs one command line; anything but JSON or a one-line refusal fails, naming it.
    void expectAnswerOrRefusal(std::vector<std::string> args) {
        args.insert(args.begin() + 1, kPinned.begin(), kPinned.end());  // the last of an option wins
        const std::string line = commandLine(args);
        guard.begin(line);
        const std::clock_t start = std::clock();
        Outcome r = run(args);
        const double seconds = double(std::clock() - start) / CLOCKS_PER_SEC;
        guard.end();
        ++calls;
        if (seconds > slowest) slowest = seconds, slowestCall = line;
        if (r.status == 0) {
            EXPECT_TRUE(json::accept(r.out)) << line << "\nprinted no JSON: " << r.out.substr(0, 300);
        } else if (r.status == 2) {
            EXPECT_EQ(r.errLines(), 1) << line << "\nrefused with: " << r.err;
            EXPECT_TRUE(r.out.empty()) << line << "\nrefused, yet printed: " << r.out.substr(0, 300);
        } else {
            ADD_FAILURE() << line << "\nexit " << r.status << ": " << r.err;
        }
    }

    ~Sweep() {
        std::printf("%d calls; slowest %.3f processor seconds: %s\n", calls, slowest, slowestCall.c_str());
    }
};

std::vector<std::string> withPrefs(std::vector<std::string> args, const std::optional<fs::path>& prefs) {
    if (prefs) args.insert(args.end(), {"--prefs", prefs->string()});
    return args;
}

std::vector<const cli::Operation*> everyOperation(const cli::CallRegistry& registry) {
    std::vector<const cli::Operation*> ops;
    for (const std::string& className : registry.classNames())
        for (const cli::Operation* op : registry.operationsOf(className)) ops.push_back(op);
    return ops;
}

std::vector<std::string> everyIntent() {
    std::vector<std::string> intents(std::begin(kIntentTypeNames), std::end(kIntentTypeNames));
    intents.push_back("NoSuchIntent");  // the fallback card
    return intents;
}

// The demo stores as the program writes them, for the pinned clock and zone.
demo::DemoStores demoStores() {
    platform::PlatformOptions options;
    options.timeZoneId = "Europe/London";
    options.localeId = "en_US";
    platform::Platform platform(std::move(options));
    platform.setNow(platform::Date::fromUnix(1709623800));  // the pinned --now, 07:30 in London
    return demo::makeDemoStores(platform);
}

// Every entry of every dictionary in the demo stores, side by side: a
// dictionary argument every operation finds its own keys in.
Dictionary everyDemoEntry() {
    Dictionary all;
    std::function<void(const Dictionary&)> collect = [&](const Dictionary& d) {
        for (const auto& [key, value] : d) {
            if (const Dictionary* inner = value.dictionary()) collect(*inner);
            else all.setObject(value, key);
        }
    };
    demo::DemoStores stores = demoStores();
    collect(stores.shared);
    collect(stores.standard);
    return all;
}

// `d` with every value that is not a dictionary replaced by `change(value)`, at every depth.
Dictionary replaceLeaves(const Dictionary& d, const std::function<Value(const Value&)>& change) {
    Dictionary out;
    for (const auto& [key, value] : d) {
        if (const Dictionary* inner = value.dictionary()) out.setObject(replaceLeaves(*inner, change), key);
        else out.setObject(change(value), key);
    }
    return out;
}

// A value of another kind, so that every kind turns up somewhere.
Value otherKind(const Value& v) {
    switch (v.kind()) {
        case Value::Kind::Integer:
        case Value::Kind::Real: return Value("12%@%n");
        case Value::Kind::String: return Value(1e308);
        case Value::Kind::Boolean: return Value(Dictionary{{"key", Value(1)}});
        case Value::Kind::Date: return Value("2024-03-05T07:30:00");
        case Value::Kind::Dictionary: return Value(platform::Array{Value(1), Value("2")});
        case Value::Kind::Array: return Value(true);
        default: return Value(-1);
    }
}

std::vector<double> absurdNumbers() {
    using L = std::numeric_limits<double>;
    return {L::quiet_NaN(), L::infinity(), -L::infinity(), 1e308, -1e308, L::denorm_min(), 0, -1,
            static_cast<double>(std::numeric_limits<long long>::max())};
}

// Writes a store's dictionary into DIR/STEM.plist through the program's own store.
void writeStores(const fs::path& dir, const Dictionary& shared, const Dictionary& standard) {
    platform::PlatformOptions options;
    options.preferencesDir = dir;
    platform::Platform platform(std::move(options));
    auto group = platform.suiteNamed(platform::kAppGroupSuite);
    for (const auto& [key, value] : shared) group->setObject(value, key);
    auto own = platform.standardUserDefaults();
    for (const auto& [key, value] : standard) own->setObject(value, key);
}

// A store folder for each way a store can be: none (the built-in demo data) first.
struct Store {
    std::string name;
    std::optional<fs::path> dir;
};

class Stores {
public:
    Stores() {
        add("built-in demo data", std::nullopt);
        for (auto [name, now] : {std::pair{"demo on disk", kPinned[3]}, {"demo a month old", "2024-02-05T07:30:00"}}) {
            fs::path dir = add(name);
            Outcome r = run({"demo", "--prefs", dir.string(), "--tz", kPinned[1], "--now", now});
            EXPECT_EQ(r.status, 0) << r.err;
        }
        add("empty folder");
        demo::DemoStores demo = demoStores();
        auto wrongTop = [](const Dictionary& d) {
            Dictionary out;
            for (const auto& [key, value] : d) out.setObject(otherKind(value), key);
            return out;
        };
        writeStores(add("every key of another kind"), wrongTop(demo.shared), wrongTop(demo.standard));
        writeStores(add("every inner value of another kind"), replaceLeaves(demo.shared, otherKind),
                    replaceLeaves(demo.standard, otherKind));
        // Absurd numbers in turn, each key a different one, and again shifted by one.
        for (std::size_t shift : {0, 1}) {
            std::size_t turn = shift;
            auto change = [&turn](const Value& v) {
                const auto absurd = absurdNumbers();
                return v.isNumber() ? Value(absurd[turn++ % absurd.size()]) : v;
            };
            const Dictionary shared = replaceLeaves(demo.shared, change);
            writeStores(add("absurd numbers, turn " + std::to_string(shift)), shared, replaceLeaves(demo.standard, change));
        }
        fs::path damaged = add("damaged files");
        for (const char* stem : {"group.brumelkai.Velmorant", "standard"})
            std::ofstream(damaged / (std::string(stem) + ".plist")) << "bplist00\xff\x01 not a store";
    }
    const std::vector<Store>& all() const { return stores_; }

private:
    fs::path add(const std::string& name) {
        fs::path dir = tmp_.path() / std::to_string(stores_.size());
        fs::create_directories(dir);
        add(name, dir);
        return dir;
    }
    void add(const std::string& name, std::optional<fs::path> dir) { stores_.push_back({name, std::move(dir)}); }

    TempDir tmp_;
    std::vector<Store> stores_;
};

// Typical arguments: a size or figure, a count, a flag, a setting's name, the
// demo night's morning, and a dictionary holding every demo entry.
std::string typical(ParamType type) {
    switch (type) {
        case ParamType::Number: return "60";
        case ParamType::Integer: return "7";
        case ParamType::Bool: return "true";
        case ParamType::String: return "requiredHours";
        case ParamType::Date: return "2024-03-05T07:30:00";
        case ParamType::Dictionary: return cli::toJson(Value(everyDemoEntry())).dump();
    }
    return "";
}

std::vector<std::string> hostile(ParamType type) {
    const std::string specifiers = "%@ %n %s %1$@ %99$d %d%d%d%d %ls %.99999f %*d %-2147483648d %% %";
    switch (type) {
        case ParamType::Number: {
            std::vector<std::string> numbers = {"nan", "inf", "-inf", "1e308", "-1e308", "4.9406564584124654e-324",
                                                "0", "-1", "3.5e38", "9223372036854775807", "-9223372036854775808",
                                                "nil"};
            // The largest picture side the canvas takes at the default scale: a
            // quarter of a gigabyte of pixels, too slow to draw under the sanitizers.
            if (!kSanitized) numbers.push_back(std::to_string(platform::Canvas::kMaxPixels / 3));
            return numbers;
        }
        case ParamType::Integer:
            return {"0", "-1", "-7", "2147483647", "2147483648", "-2147483649", "9223372036854775807",
                    "-9223372036854775808", "nil"};
        case ParamType::Bool: return {"false", "nil"};
        case ParamType::String:
            return {"", std::string(5000, 'x'), specifiers, std::string(2500, '%') + std::string(2500, 'n'),
                    "\xff\xfe\xc3", "\xe2\x80\xae" "abc\nline", "nil"};
        case ParamType::Date:
            return {"0001-01-01T00:00:00", "0001-01-01T00:00:00Z", "9999-12-31T23:59:59", "9999-12-31T23:59:59.999Z",
                    "1970-01-01T00:00:00Z", "2024-03-31T01:30:00", "2024-10-27T01:30:00", "nil"};
        case ParamType::Dictionary: {
            std::vector<std::string> dicts = {"{}", "[]", "nil", R"({"date":"0001-01-01T00:00:00"})",
                                              R"({"a":{"b":{"c":{"d":[[[[]]]]}}}})"};
            const Dictionary all = everyDemoEntry();
            dicts.push_back(cli::toJson(Value(replaceLeaves(all, otherKind))).dump());
            dicts.push_back(cli::toJson(Value(replaceLeaves(all, [&](const Value&) { return Value(specifiers); }))).dump());
            // JSON has no NaN or infinity: the absurd numbers it can carry.
            for (double absurd : {1e308, -1e308, 4.9406564584124654e-324, 0.0, -1.0, 9.2e18})
                dicts.push_back(cli::toJson(Value(replaceLeaves(all, [&](const Value&) { return Value(absurd); }))).dump());
            return dicts;
        }
    }
    return {};
}

std::vector<std::string> typicalCall(const cli::Operation& op) {
    std::vector<std::string> args = {"call", op.className + "." + op.selector};
    for (ParamType p : op.params) args.push_back(typical(p));
    return args;
}

TEST(Sweep, EveryCallAndCardOnEveryStore) {
    const cli::CallRegistry registry = cli::makeCallRegistry();
    const auto ops = everyOperation(registry);
    ASSERT_GT(ops.size(), 100u);
    Stores stores;
    TempDir out;
    const std::string card = (out.path() / "card.png").string();
    Sweep sweep;
    for (const Store& store : stores.all()) {
        SCOPED_TRACE(store.name);
        for (const cli::Operation* op : ops) sweep.expectAnswerOrRefusal(withPrefs(typicalCall(*op), store.dir));
        // The whole card drawn too, from whatever the store holds.
        for (const std::string& intent : everyIntent())
            sweep.expectAnswerOrRefusal(withPrefs({"show", intent, "--png", card}, store.dir));
    }
}

TEST(Sweep, EveryArgumentInTurnHostile) {
    const cli::CallRegistry registry = cli::makeCallRegistry();
    std::map<ParamType, std::vector<std::string>> hostiles;
    Sweep sweep;
    for (const cli::Operation* op : everyOperation(registry)) {
        for (std::size_t i = 0; i < op->params.size(); ++i) {
            auto [at, fresh] = hostiles.try_emplace(op->params[i]);
            if (fresh) at->second = hostile(op->params[i]);
            for (const std::string& bad : at->second) {
                std::vector<std::string> args = typicalCall(*op);
                args[2 + i] = bad;
                sweep.expectAnswerOrRefusal(args);
            }
        }
        // Too few and too many arguments.
        std::vector<std::string> args = typicalCall(*op);
        args.push_back("1");
        sweep.expectAnswerOrRefusal(args);
        if (!op->params.empty()) {
            args.resize(args.size() - 2);
            sweep.expectAnswerOrRefusal(args);
        }
    }
}

// Every option of a call and a card at its edges, and beyond them.
TEST(Sweep, HostileOptions) {
    const std::string longText(5000, 'x');
    const std::string specifiers = "%@%n%s%1$@%99$d";
    const std::vector<std::vector<std::string>> options = {
        {"--width", "300"}, {"--width", "600"}, {"--width", "299.99"}, {"--width", "nan"}, {"--width", "inf"},
        {"--width", "-1"}, {"--width", "0"}, {"--width", "1e308"}, {"--width", "4.9406564584124654e-324"},
        {"--scale", "1"}, {"--scale", "16"}, {"--scale", "0"}, {"--scale", "nan"}, {"--scale", "-3"},
        {"--scale", "1e308"}, {"--scale", "16.0001"}, {"--scale", "4.9406564584124654e-324"},
        {"--width", "512", "--scale", "16"},  // the widest card the canvas holds
        {"--locale", ""}, {"--locale", "xx_YY"}, {"--locale", "ar_EG"}, {"--locale", "th_TH_TH"},
        {"--locale", "ja_JP@calendar=japanese"}, {"--locale", "he_IL"}, {"--locale", "de_DE"},
        {"--locale", specifiers}, {"--locale", longText}, {"--locale", "en_US_POSIX"},
        {"--tz", ""}, {"--tz", "UTC"}, {"--tz", "Pacific/Kiritimati"}, {"--tz", "Pacific/Pago_Pago"},
        {"--tz", "Etc/GMT+12"}, {"--tz", "Mars/Olympus"}, {"--tz", longText}, {"--tz", specifiers},
        {"--now", "0001-01-01T00:00:00"}, {"--now", "9999-12-31T23:59:59"}, {"--now", "2024-03-31T01:30:00"},
        {"--now", "2024-10-27T01:30:00"}, {"--now", ""}, {"--now", "garbage"}, {"--now", longText},
        {"--prefs", ""},
    };
    std::vector<std::string> intents = everyIntent();
    intents.insert(intents.end(), {"", longText, specifiers});
    Sweep sweep;
    for (const auto& option : options) {
        for (const std::string& intent : intents) {
            std::vector<std::string> args = {"show", intent};
            args.insert(args.end(), option.begin(), option.end());
            sweep.expectAnswerOrRefusal(args);
        }
    }
    // A call takes the same options, save the card's width: the edges it can
    // reach together (refusals are settled before any operation runs).
    const std::vector<std::vector<std::string>> callOptions = {
        {"--locale", "ar_EG", "--tz", "Pacific/Kiritimati", "--now", "0001-01-01T00:00:00", "--scale", "1"},
        {"--locale", "ja_JP@calendar=japanese", "--tz", "Etc/GMT+12", "--now", "9999-12-31T23:59:59", "--scale", "16"},
        {"--locale", "th_TH_TH", "--tz", "Europe/London", "--now", "2024-03-31T01:30:00"},
    };
    const cli::CallRegistry registry = cli::makeCallRegistry();
    for (const auto& option : callOptions) {
        for (const cli::Operation* op : everyOperation(registry)) {
            std::vector<std::string> args = typicalCall(*op);
            args.insert(args.end(), option.begin(), option.end());
            sweep.expectAnswerOrRefusal(args);
        }
    }
}

}  // namespace
