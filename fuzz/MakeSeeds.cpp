// Writes the fuzzer's seed inputs into a folder: the demo stores as the phone
// keeps them (binary and XML), the stores after a night of write-backs, and
// damaged variants of each kind users have sent in.
//   velmorant_fuzz_seeds OUTDIR
#include "StoreHarness.h"

#include "demo/DemoData.h"
#include "metrics/GroupMetrics.h"
#include "platform/store/PlistCodec.h"

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <limits>

namespace {

using namespace velmorant;
using metrics::GroupMetrics;
using platform::Dictionary;
using platform::PlistFormat;
using platform::Value;
using Bytes = std::vector<std::uint8_t>;

Bytes plist(const Dictionary& root, PlistFormat format) {
    std::string error;
    auto bytes = platform::serialisePlist(root, format, &error);
    if (!bytes) throw std::runtime_error(error);
    return *bytes;
}

Bytes text(std::string_view s) { return Bytes(s.begin(), s.end()); }

std::unique_ptr<platform::Platform> platformAt(platform::Date now) {
    platform::PlatformOptions options;
    options.now = now;
    options.timeZoneId = "America/New_York";
    options.localeId = "en_US";
    return std::make_unique<platform::Platform>(std::move(options));
}

// Replaces the value at a dotted path ("bankDict.spO2Dict.averageSpO2").
void put(Dictionary& root, std::string_view path, Value value) {
    auto dot = path.find('.');
    if (dot == std::string_view::npos) {
        root.setObject(std::move(value), path);
        return;
    }
    std::string head(path.substr(0, dot));
    const Value* inner = root.objectForKey(head);
    Dictionary child = inner && inner->dictionary() ? *inner->dictionary() : Dictionary();
    put(child, path.substr(dot + 1), std::move(value));
    root.setObject(Value(std::move(child)), head);
}

Value nested(int depth) {
    Value v(1);
    for (int i = 0; i < depth; ++i) v = Value(platform::Array{v});
    return v;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s OUTDIR\n", argv[0]);
        return 2;
    }
    const std::filesystem::path out = argv[1];
    std::filesystem::create_directories(out);
    auto write = [&](const char* name, const Bytes& standard, const Bytes& shared) {
        Bytes bytes = fuzz::encodeInput({standard, shared});
        std::ofstream(out / name, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()),
                                                           static_cast<std::streamsize>(bytes.size()));
    };

    auto platform = platformAt(fuzz::morning());
    const demo::DemoStores demo = demo::makeDemoStores(*platform);
    const Bytes standardBinary = plist(demo.standard, PlistFormat::Binary);
    const Bytes sharedBinary = plist(demo.shared, PlistFormat::Binary);
    const Bytes sharedXml = plist(demo.shared, PlistFormat::Xml);

    write("demo-binary", standardBinary, sharedBinary);
    write("demo-xml", plist(demo.standard, PlistFormat::Xml), sharedXml);
    write("demo-shared-only", {}, sharedBinary);

    // After a night of snippets: the sleep-bank cache and the widget mirrors are there too.
    {
        demo::installDemoStores(*platform);
        GroupMetrics m(*platform);
        m.requestSleepBank();
        m.requestQualityForSwift();
        const Dictionary after = platform->suiteNamed(platform::kAppGroupSuite)->dictionaryRepresentation();
        write("after-write-backs-binary", standardBinary, plist(after, PlistFormat::Binary));
        write("after-write-backs-xml", standardBinary, plist(after, PlistFormat::Xml));
    }

    // Yesterday's results, still in the store this morning.
    write("stale-day", standardBinary,
          plist(demo::makeDemoStores(*platformAt(fuzz::morning().dateByAddingTimeInterval(-86400))).shared,
                PlistFormat::Binary));

    // The user's own palette and night hour.
    {
        Dictionary standard = demo.standard;
        for (int n = 1; n <= 5; ++n) standard.setObject(Value(40.0 * n), "Hue" + std::to_string(n));
        standard.setObject(Value(false), "darkTheme6");
        standard.setObject(Value(true), "miles");
        standard.setObject(Value(true), "tempF");
        standard.setObject(Value(190.0), "maxHeartRate");
        standard.setObject(Value(0), "nightHour11");
        write("custom-preferences", plist(standard, PlistFormat::Xml), sharedBinary);
    }

    // Values of the wrong kind where numbers, dates and dictionaries belong.
    {
        Dictionary shared = demo.shared;
        put(shared, "bankDict.nightHour", Value("nine"));
        put(shared, "bankDict.spO2Dict.averageSpO2", Value("95.4%"));
        put(shared, "bankDict.respRateDict", Value(platform::Array{Value(1), Value(2)}));
        put(shared, "bankDict.readyDict.hrvAverage", Value(platform::Data{1, 2, 3}));
        put(shared, "bankDict.startDate", Value(12345.0));
        put(shared, "watchTrackDict.rawSynchTime", Value("yesterday"));
        put(shared, "velmorantConfig.requiredHours", Value(Dictionary{{"h", 8}}));
        put(shared, "lastConsistency", Value("YES"));
        write("wrong-kinds", text(""), plist(shared, PlistFormat::Xml));
    }

    // Numbers no sensor produces.
    {
        Dictionary shared = demo.shared;
        const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
        put(shared, "bankDict.spO2Dict.averageSpO2", Value(nan));
        put(shared, "bankDict.respRateDict.averageRespRate", Value(inf));
        put(shared, "bankDict.wristTempTodayValue", Value(-inf));
        put(shared, "bankDict.requiredHours", Value(1e300));
        put(shared, "bankDict.averageEfficiency", Value(1e-40));
        put(shared, "bankDict.readyDict.bpmAverage", Value(-1e9));
        put(shared, "bankDict.octaneDict.hrvTodayVal", Value(std::numeric_limits<long long>::max()));
        put(shared, "velmorantConfig.nightHour", Value(-7));
        put(shared, "watchTrackDict.rawSleepTime", Value(3.4e38));
        write("extreme-numbers-binary", standardBinary, plist(shared, PlistFormat::Binary));
        write("extreme-numbers-xml", standardBinary, plist(shared, PlistFormat::Xml));
    }

    // Files cut short, bit-flipped, too deep, or not a dictionary at all.
    write("truncated-binary", standardBinary, Bytes(sharedBinary.begin(), sharedBinary.begin() + sharedBinary.size() / 2));
    write("truncated-xml", standardBinary, Bytes(sharedXml.begin(), sharedXml.begin() + sharedXml.size() / 2));
    {
        Bytes flipped = sharedBinary;
        flipped[flipped.size() - 20] ^= 0x40;  // the object count in the trailer
        flipped[flipped.size() / 3] ^= 0xFF;
        write("corrupt-binary", standardBinary, flipped);
    }
    write("nested-too-deep-xml", standardBinary, plist(Dictionary{{"bankDict", nested(80)}}, PlistFormat::Xml));
    write("nested-too-deep-binary", standardBinary, plist(Dictionary{{"bankDict", nested(80)}}, PlistFormat::Binary));
    write("not-a-dictionary", text("<?xml version=\"1.0\"?><plist version=\"1.0\"><array><integer>1</integer></array></plist>"),
          sharedBinary);
    write("garbage-text", text("hello"), text("bplist00"));
    return 0;
}
