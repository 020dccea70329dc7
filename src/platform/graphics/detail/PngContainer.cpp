#include "platform/graphics/detail/PngContainer.h"

#include <png.h>

#include <csetjmp>
#include <string>

namespace velmorant::platform {

struct PngContainer::Handles {
    ~Handles() { png_destroy_write_struct(&png, &info); }
    png_structp png = nullptr;
    png_infop info = nullptr;
    std::FILE* file = nullptr;
    std::string* memory = nullptr;
    // Set by the callbacks, which must neither throw nor jump: plain characters.
    char reason[160] = {};
};

namespace {

using Handles = PngContainer::Handles;
using Step = PngContainer::Step;

void note(Handles& handles, const char* why) {
    if (!handles.reason[0]) std::snprintf(handles.reason, sizeof handles.reason, "%s", why);
}

[[noreturn]] void onError(png_structp png, png_const_charp message) {
    note(*static_cast<Handles*>(png_get_error_ptr(png)), message ? message : "libpng failed");
    png_longjmp(png, 1);
}

void onWarning(png_structp, png_const_charp) {}

void onWrite(png_structp png, png_bytep bytes, size_t size) {
    Handles& handles = *static_cast<Handles*>(png_get_io_ptr(png));
    if (handles.reason[0]) return;
    if (handles.file) {
        if (std::fwrite(bytes, 1, size, handles.file) != size) note(handles, "cannot be written completely");
        return;
    }
    try {
        handles.memory->append(reinterpret_cast<const char*>(bytes), size);
    } catch (...) {
        note(handles, "out of memory");
    }
}

void onFlush(png_structp) {}

void writeHeader(png_structp png, png_infop info, const Step& step) {
    png_set_IHDR(png, info, png_uint_32(step.width), png_uint_32(step.height), 8,
                 step.alpha ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (step.description) {
        char key[] = "Description", none[] = "";
        png_text text{};
        text.compression = PNG_ITXT_COMPRESSION_NONE;
        text.key = key;
        text.text = const_cast<char*>(step.description);  // copied by png_set_text
        text.itxt_length = step.descriptionLength;
        text.lang = none;
        text.lang_key = none;
        png_set_text(png, info, &text, 1);
    }
    png_write_info(png, info);
}

void writeImageData(png_structp png, png_infop, const Step& step) {
    png_write_chunk(png, reinterpret_cast<png_const_bytep>("IDAT"), step.bytes, step.size);
}

void writeEnd(png_structp png, png_infop, const Step& step) {
    png_write_chunk(png, reinterpret_cast<png_const_bytep>("IEND"), nullptr, 0);
}

// libpng reports an error by jumping back here, past `write`'s frame: neither
// frame has anything to destroy.
bool guarded(png_structp png, png_infop info, void (*write)(png_structp, png_infop, const Step&), const Step& step) {
    if (setjmp(png_jmpbuf(png))) return false;
    write(png, info, step);
    return true;
}

}  // namespace

PngContainer::PngContainer(std::FILE* file, std::string* memory) : handles_(std::make_unique<Handles>()) {
    Handles& h = *handles_;
    h.file = file;
    h.memory = memory;
    h.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &h, onError, onWarning);
    if (h.png) h.info = png_create_info_struct(h.png);
    if (!h.info) {
        note(h, "out of memory");
        return;
    }
    png_set_write_fn(h.png, &h, onWrite, onFlush);
}

PngContainer::~PngContainer() = default;

bool PngContainer::run(void (*write)(png_struct*, png_info*, const Step&), const Step& step) {
    Handles& h = *handles_;
    if (!h.reason[0] && guarded(h.png, h.info, write, step) && !h.reason[0]) return true;
    if (error_.empty()) error_ = h.reason[0] ? h.reason : "libpng failed";
    return false;
}

bool PngContainer::begin(int width, int height, bool alpha, const std::string& description) {
    Step step{.width = width, .height = height, .alpha = alpha};
    if (!description.empty()) step.description = description.c_str(), step.descriptionLength = description.size();
    return run(writeHeader, step);
}

bool PngContainer::imageData(const std::uint8_t* bytes, std::size_t size) {
    return run(writeImageData, {.bytes = bytes, .size = size});
}

bool PngContainer::end() { return run(writeEnd, {}); }

}  // namespace velmorant::platform
