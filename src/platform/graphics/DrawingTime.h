#pragma once

namespace velmorant::platform {

// Seconds this thread has spent with a canvas open, summed over its life: a
// caller reads it before and after a piece of work to tell drawing time apart
// from the rest. Nested canvases (a layer drawn while a gauge is drawn) count once.
double drawingSecondsOnThisThread();

// Counts the time from construction to destruction as drawing, once per thread
// however deeply nested.
class DrawingTimeScope {
public:
    DrawingTimeScope();
    ~DrawingTimeScope();
    DrawingTimeScope(const DrawingTimeScope&) = delete;
    DrawingTimeScope& operator=(const DrawingTimeScope&) = delete;

    struct ThreadDrawing;

private:
    // The opening thread's record, so a scope closed elsewhere still balances it.
    ThreadDrawing* thread_;
};

}  // namespace velmorant::platform
