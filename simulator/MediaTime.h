#pragma once

#include <compare>
#include <cstdint>

namespace qoro
{

/// A position in a video with the full precision of a double, on a clock of whole microseconds: what the clock adds is
/// exact, and so is the fraction of a microsecond that a seek left.
class MediaTime
{
public:
    MediaTime() = default;
    /// @param seconds clamped to about 73,000 years around 0, so that two of them plus the session's time do not
    ///        overflow; NaN is 0
    explicit MediaTime(double seconds);

    double seconds() const { return static_cast<double>(microseconds_) / 1e6 + rest_; }
    MediaTime after(std::int64_t microseconds) const;
    /// Whole microseconds from an earlier position to this one, rounded; negative from a later one.
    std::int64_t microseconds_since(const MediaTime& earlier) const;

    friend auto operator<=>(const MediaTime&, const MediaTime&) = default;

private:
    std::int64_t microseconds_ = 0;
    /// Seconds, at most half a microsecond either way.
    double rest_ = 0;
};

} // namespace qoro
