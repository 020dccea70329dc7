#pragma once

#include <compare>

namespace velmorant::platform {

// An absolute instant, kept as seconds since 1970-01-01 00:00 UTC like the
// phone's date type keeps a double interval.
class Date {
public:
    // Seconds between the Unix epoch and the property-list epoch (2001-01-01 UTC).
    static constexpr double kReferenceOffset = 978307200.0;

    constexpr Date() = default;
    static constexpr Date fromUnix(double seconds) { return Date(seconds); }
    static constexpr Date fromReference(double seconds) { return Date(seconds + kReferenceOffset); }

    constexpr double timeIntervalSince1970() const { return seconds_; }
    constexpr double timeIntervalSinceReferenceDate() const { return seconds_ - kReferenceOffset; }
    constexpr double timeIntervalSinceDate(Date other) const { return seconds_ - other.seconds_; }
    constexpr Date dateByAddingTimeInterval(double seconds) const { return Date(seconds_ + seconds); }
    // ICU keeps instants as milliseconds since 1970.
    constexpr double icuMillis() const { return seconds_ * 1000.0; }
    static constexpr Date fromIcuMillis(double millis) { return Date(millis / 1000.0); }

    constexpr auto operator<=>(const Date&) const = default;

private:
    constexpr explicit Date(double seconds) : seconds_(seconds) {}
    double seconds_ = 0;
};

}  // namespace velmorant::platform
