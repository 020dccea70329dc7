#include "platform/graphics/BitmapMemory.h"

#include "platform/graphics/detail/UninitialisedSurface.h"

#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>

namespace velmorant::platform {
namespace {

std::atomic<bool> hugePages{false};

// Pixels in a mapping of their own, unmapped with their surface.
struct MappedPixels {
    void* start;
    std::size_t length;

    static void release(void* pixels) {
        auto* mapped = static_cast<MappedPixels*>(pixels);
        ::munmap(mapped->start, mapped->length);
        delete mapped;
    }
};

// `bytes` of fresh memory starting on a 2 MiB boundary, advised to use huge
// pages; none when the system has no room for the mapping.
MappedPixels* mapOnHugePages(std::size_t bytes) {
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    const std::size_t length = hugePageMappingLength(bytes, page);
    // Room for the length from the first 2 MiB boundary on; what lies either side is given back.
    const std::size_t reserved = length + kHugePage - page;
    void* base = ::mmap(nullptr, reserved, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (base == MAP_FAILED) return nullptr;
    const auto first = reinterpret_cast<std::uintptr_t>(base);
    const std::uintptr_t start = (first + kHugePage - 1) & ~(kHugePage - 1);
    if (start > first) ::munmap(base, start - first);
    if (const std::uintptr_t end = first + reserved; end > start + length)
        ::munmap(reinterpret_cast<void*>(start + length), end - start - length);
    // Only advice: where the kernel has no huge page at hand, ordinary pages serve.
    ::madvise(reinterpret_cast<void*>(start), length, MADV_HUGEPAGE);
    return new MappedPixels{reinterpret_cast<void*>(start), length};
}

}  // namespace

std::size_t hugePageMappingLength(std::size_t bytes, std::size_t page) {
    const std::size_t length = (bytes + page - 1) / page * page;
    // Faulting in a tail page by page costs more time than clearing a whole
    // huge page once the tail passes an eighth of one (measured on 4 KiB pages),
    // but below half of one the memory counts more: a 280-point picture at
    // scale 3 would hold 1.2 MB more, drawn beside a card near its memory bound.
    if (length % kHugePage >= kHugePage / 2) return (length + kHugePage - 1) / kHugePage * kHugePage;
    return length;
}

void setHugePageBitmaps(bool on) { hugePages.store(on, std::memory_order_relaxed); }

bool hugePageBitmaps() { return hugePages.load(std::memory_order_relaxed); }

SurfacePtr uninitialisedSurface(cairo_format_t format, int width, int height) {
    static cairo_user_data_key_t pixelsKey;
    if (width <= 0 || height <= 0) return nullptr;
    const int stride = cairo_format_stride_for_width(format, width);
    if (stride <= 0) return nullptr;
    const std::size_t bytes = static_cast<std::size_t>(stride) * static_cast<std::size_t>(height);
    unsigned char* pixels = nullptr;
    void* owner = nullptr;
    cairo_destroy_func_t release = std::free;
    if (bytes >= kHugePage && hugePageBitmaps()) {
        if (MappedPixels* mapped = mapOnHugePages(bytes)) {
            pixels = static_cast<unsigned char*>(mapped->start);
            owner = mapped;
            release = MappedPixels::release;
        }
    }
    if (!pixels) owner = pixels = static_cast<unsigned char*>(std::malloc(bytes));
    if (!pixels) return nullptr;
    SurfacePtr made(cairo_image_surface_create_for_data(pixels, format, width, height, stride));
    if (cairo_surface_status(made.get()) != CAIRO_STATUS_SUCCESS ||
        cairo_surface_set_user_data(made.get(), &pixelsKey, owner, release) != CAIRO_STATUS_SUCCESS) {
        release(owner);
        return nullptr;
    }
    return made;
}

}  // namespace velmorant::platform
