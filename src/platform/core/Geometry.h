#pragma once

namespace velmorant::platform {

struct Size {
    double width = 0, height = 0;
    bool operator==(const Size&) const = default;
};

struct Point {
    double x = 0, y = 0;
    bool operator==(const Point&) const = default;
};

struct Rect {
    double x = 0, y = 0, width = 0, height = 0;
    Size size() const { return {width, height}; }
    bool operator==(const Rect&) const = default;
};

}  // namespace velmorant::platform
