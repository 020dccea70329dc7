#include "platform/graphics/DrawingTime.h"

#include <chrono>

namespace velmorant::platform {
namespace {

using Clock = std::chrono::steady_clock;

}  // namespace

struct DrawingTimeScope::ThreadDrawing {
    int depth = 0;
    Clock::time_point outermostStart;
    double seconds = 0;
};

namespace {

thread_local DrawingTimeScope::ThreadDrawing drawing;

}  // namespace

double drawingSecondsOnThisThread() {
    if (drawing.depth == 0) return drawing.seconds;
    return drawing.seconds + std::chrono::duration<double>(Clock::now() - drawing.outermostStart).count();
}

DrawingTimeScope::DrawingTimeScope() : thread_(&drawing) {
    if (thread_->depth++ == 0) thread_->outermostStart = Clock::now();
}

DrawingTimeScope::~DrawingTimeScope() {
    if (--thread_->depth == 0)
        thread_->seconds += std::chrono::duration<double>(Clock::now() - thread_->outermostStart).count();
}

}  // namespace velmorant::platform
