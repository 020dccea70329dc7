#pragma once

#include <string>
#include <vector>

namespace velmorant::review {

// One field that differs between two records, in words.
struct FieldChange {
    // The view ("sleepTimeLabel"), "card" for the card as a whole, or the mirror key.
    std::string subject;
    // What kind of field: "text", "font", "colour", "hidden", "image", "frame", "spoken text", "value".
    std::string field;
    // The two values as a reader would say them; "none" for a missing one.
    std::string before, after;

    // "sleepTimeLabel text 7h 36m → 7h 40m".
    std::string words() const;
};

}  // namespace velmorant::review
