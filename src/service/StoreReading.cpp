#include "StoreReading.h"

#include "cli/IsoDate.h"
#include "platform/store/PlistCodec.h"
#include "platform/text/TimeZone.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include <fstream>
#include <iostream>
#include <iterator>

namespace velmorant::service {
namespace {

namespace fs = std::filesystem;
using json = nlohmann::json;

constexpr const char* kSharedFile = "group.brumelkai.Velmorant.plist";
constexpr const char* kStandardFile = "standard.plist";

class SharedLock {
public:
    explicit SharedLock(const fs::path& lockFile) : fd_(::open(lockFile.c_str(), O_RDONLY | O_CLOEXEC)) {
        if (fd_ >= 0) ::flock(fd_, LOCK_SH);
    }
    ~SharedLock() {
        if (fd_ >= 0) ::close(fd_);
    }
    SharedLock(const SharedLock&) = delete;
    SharedLock& operator=(const SharedLock&) = delete;

private:
    int fd_;
};

std::string readLocked(const fs::path& file) {
    SharedLock lock(fs::path(file.string() + ".lock"));
    std::error_code ec;
    if (!fs::is_regular_file(file, ec)) return {};
    auto size = fs::file_size(file, ec);
    if (ec || size > platform::kMaxPlistBytes) return {};
    std::ifstream in(file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// A JSON value as the program prints store values: {"date": ISO} is a date,
// {"data": [bytes]} data, whole numbers integers, other numbers doubles.
platform::Value fromJson(const json& value, int depth, const platform::TimeZone& utc) {
    if (depth > platform::kMaxPlistDepth) throw BadRequest("store nested deeper than " + std::to_string(platform::kMaxPlistDepth) + " levels");
    switch (value.type()) {
        case json::value_t::boolean: return value.get<bool>();
        case json::value_t::number_integer:
        case json::value_t::number_unsigned:
            if (value.is_number_unsigned() && value.get<std::uint64_t>() > INT64_MAX) return value.get<double>();
            return static_cast<long long>(value.get<std::int64_t>());
        case json::value_t::number_float: return value.get<double>();
        case json::value_t::string: return value.get<std::string>();
        case json::value_t::array: {
            platform::Array items;
            for (const json& item : value) items.push_back(fromJson(item, depth + 1, utc));
            return items;
        }
        case json::value_t::object: {
            if (value.size() == 1 && value.contains("date") && value["date"].is_string()) {
                auto date = cli::parseIsoDate(value["date"].get<std::string>(), utc);
                if (!date) throw BadRequest("store date \"" + value["date"].get<std::string>() + "\" is not ISO 8601");
                return *date;
            }
            if (value.size() == 1 && value.contains("data") && value["data"].is_array()) {
                platform::Data bytes;
                for (const json& b : value["data"]) {
                    if (!b.is_number_unsigned() || b.get<unsigned>() > 255) throw BadRequest("store data holds a value that is not a byte");
                    bytes.push_back(static_cast<std::uint8_t>(b.get<unsigned>()));
                }
                return bytes;
            }
            platform::Dictionary entries;
            for (const auto& [key, item] : value.items()) entries.setObject(fromJson(item, depth + 1, utc), key);
            return entries;
        }
        default: throw BadRequest("store holds a JSON null, which no store can hold");
    }
}

platform::Dictionary dictionaryFrom(const json& document, const char* name, const platform::TimeZone& utc) {
    if (!document.contains(name)) return {};
    const json& part = document[name];
    if (!part.is_object()) throw BadRequest(std::string("\"") + name + "\" must be a JSON object of store keys");
    return *fromJson(part, 1, utc).dictionary();
}

demo::DemoStores parseJsonStores(const std::string& body) {
    json document = json::parse(body, nullptr, false);
    if (document.is_discarded()) throw BadRequest("request body is neither a property list nor valid JSON");
    if (!document.is_object()) throw BadRequest("JSON body must be an object {\"shared\": {…}, \"standard\": {…}}");
    for (const auto& [key, unused] : document.items())
        if (key != "shared" && key != "standard") throw BadRequest("JSON body has an unknown part \"" + key + "\" (known: shared, standard)");
    const platform::TimeZone utc = *platform::TimeZone::named("UTC");
    return {dictionaryFrom(document, "shared", utc), dictionaryFrom(document, "standard", utc)};
}

std::optional<platform::Dictionary> parsePlistBytes(const std::string& bytes, std::string* error) {
    auto document = platform::parsePlist(
        {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}, error);
    if (!document) return std::nullopt;
    return std::move(document->root);
}

// A server store file that cannot be read counts as empty and is reported.
platform::Dictionary serverStore(const std::string& bytes, const char* file) {
    if (bytes.empty()) return {};
    std::string error;
    auto root = parsePlistBytes(bytes, &error);
    if (!root) {
        std::cerr << "velmorant-snippet serve: " << file << ": " << error << " (read as empty)\n";
        return {};
    }
    return *root;
}

}  // namespace

StoreInput readStoreFiles(const fs::path& dir) {
    StoreInput input;
    input.kind = StoreInput::Kind::Files;
    input.shared = readLocked(dir / kSharedFile);
    input.standard = readLocked(dir / kStandardFile);
    return input;
}

demo::DemoStores parseStores(const StoreInput& input, const platform::Platform& platform) {
    switch (input.kind) {
        case StoreInput::Kind::Demo: return demo::makeDemoStores(platform);
        case StoreInput::Kind::Files: return {serverStore(input.shared, kSharedFile), serverStore(input.standard, kStandardFile)};
        case StoreInput::Kind::Body: break;
    }
    const std::string& body = input.shared;
    auto first = body.find_first_not_of(" \t\r\n");
    if (first != std::string::npos && body[first] == '{') return parseJsonStores(body);
    std::string error;
    auto root = parsePlistBytes(body, &error);
    if (!root) throw BadRequest("request body is not a store: " + error);
    return {std::move(*root), {}};
}

}  // namespace velmorant::service
