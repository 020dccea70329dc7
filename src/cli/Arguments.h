#pragma once

#include "CallRegistry.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace velmorant::cli {

// Bad input on the command line: the message names what is wrong.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Reads the command-line arguments of a call as its parameters' types;
// throws UsageError naming the argument that does not fit.
CallArgs readArguments(const Operation& operation, const std::vector<std::string>& args,
                       const platform::Platform& platform);

// Bounds of `show`'s picture options. Cards are laid out for hosts 300 to 600
// points wide; a picture side is width x scale pixels and the canvas holds at
// most kMaxPixels (cards are at most 420 points tall, so at scale 16 the
// height always fits).
struct PictureBounds {
    static constexpr double kMinWidth = 300, kMaxWidth = 600;
    static constexpr double kMinScale = 1, kMaxScale = 16;
};

// Reads --width / --scale; throws UsageError naming the option, its bounds and the text.
double readWidth(const std::string& text);
double readScale(const std::string& text);
// Throws UsageError when a card `width` points wide at `scale` passes the canvas's pixel limit.
void checkPictureSize(double width, double scale);

}  // namespace velmorant::cli
