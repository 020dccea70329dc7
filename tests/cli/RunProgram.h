#pragma once

#include "TempDir.h"
#include "cli/Program.h"
#include "platform/graphics/detail/CHandles.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <spng.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;
using json = nlohmann::json;

struct Outcome {
    int status;
    std::string out, err;
    long errLines() const { return std::count(err.begin(), err.end(), '\n'); }
};

// Runs the program in-process; the zone and clock are pinned unless the arguments name them.
inline Outcome run(std::vector<std::string> args) {
    for (auto [option, value] : {std::pair{"--tz", "Europe/London"}, {"--now", "2024-03-05T22:10:00"}})
        if (std::none_of(args.begin(), args.end(), [&](const std::string& a) { return a.starts_with(option); }))
            args.insert(args.end(), {option, value});
    std::ostringstream out, err;
    int status = velmorant::cli::runProgram(args, out, err);
    return {status, out.str(), err.str()};
}

inline std::string readFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

struct Png {
    unsigned width = 0, height = 0;
    std::string description;
};

// A PNG file's pixel size and "Description" text; zero size when it is not a readable PNG.
inline Png readPng(const fs::path& path) {
    std::string bytes = readFile(path);
    std::unique_ptr<spng_ctx, velmorant::platform::CRelease<spng_ctx_free>> ctx(spng_ctx_new(0));
    spng_set_png_buffer(ctx.get(), bytes.data(), bytes.size());
    Png png;
    spng_ihdr header{};
    if (bytes.empty() || spng_get_ihdr(ctx.get(), &header) != 0) return png;
    png.width = header.width, png.height = header.height;
    std::uint32_t count = 0;
    if (spng_get_text(ctx.get(), nullptr, &count) != 0) return png;
    std::vector<spng_text> texts(count);
    spng_get_text(ctx.get(), texts.data(), &count);
    for (const auto& t : texts)
        if (std::string(t.keyword) == "Description") png.description.assign(t.text, t.length);
    return png;
}
