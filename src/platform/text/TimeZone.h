#pragma once

#include "platform/core/Date.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velmorant::platform {

// A time zone, as a value: the rules of one IANA zone. Cheap to copy; the ICU object stays
// inside the platform.
class TimeZone {
public:
    // The zone of an IANA name such as Europe/London; none when the name is unknown.
    static std::optional<TimeZone> named(std::string_view id);
    // The zone the machine is set to.
    static TimeZone host();

    const std::string& id() const;
    // The daylight-saving part of the offset from GMT in force at `date`, in seconds.
    double daylightSavingTimeOffset(Date date) const;

    // What the platform's own sources unwrap (platform/text/detail/IcuHandles.h).
    struct Impl;
    const Impl& impl() const { return *impl_; }

private:
    explicit TimeZone(std::shared_ptr<const Impl> impl) : impl_(std::move(impl)) {}
    std::shared_ptr<const Impl> impl_;
};

}  // namespace velmorant::platform
