#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

struct png_struct_def;
struct png_info_def;

namespace velmorant::platform {

// The PNG file around image data compressed elsewhere, written by libpng: the
// signature, the header, an optional "Description" text, the image data
// chunks and the end, each with its checksum. Bytes go to an open file or are
// appended to a string.
class PngContainer {
public:
    PngContainer(std::FILE* file, std::string* memory);
    ~PngContainer();
    PngContainer(const PngContainer&) = delete;
    PngContainer& operator=(const PngContainer&) = delete;

    // Each is false, with the reason in `error()`, once anything failed.
    bool begin(int width, int height, bool alpha, const std::string& description);
    bool imageData(const std::uint8_t* bytes, std::size_t size);
    bool end();
    const std::string& error() const { return error_; }

    struct Handles;  // libpng's, and what its callbacks report into
    // The arguments of one libpng step, all plain data.
    struct Step {
        int width = 0, height = 0;
        bool alpha = false;
        const char* description = nullptr;
        std::size_t descriptionLength = 0;
        const std::uint8_t* bytes = nullptr;
        std::size_t size = 0;
    };

private:
    bool run(void (*write)(png_struct_def*, png_info_def*, const Step&), const Step& step);

    std::unique_ptr<Handles> handles_;
    std::string error_;
};

}  // namespace velmorant::platform
