#include "simulator/MediaTime.h"

#include "simulator/VirtualLoop.h"

#include <algorithm>
#include <cmath>

namespace qoro
{

namespace
{
constexpr std::int64_t Farthest = std::int64_t{1} << 61;
constexpr double HalfMicrosecond = 0.5e-6;
} // namespace

MediaTime::MediaTime(double seconds) : microseconds_(std::clamp(to_microseconds(seconds), -Farthest, Farthest))
{
    const double rest = seconds - this->seconds();
    // Not within it: NaN, a clamped position, or one whose doubles are further apart than microseconds.
    if (std::fabs(rest) <= HalfMicrosecond)
        rest_ = rest;
}

MediaTime MediaTime::after(std::int64_t microseconds) const
{
    MediaTime later = *this;
    later.microseconds_ += microseconds;
    return later;
}

std::int64_t MediaTime::microseconds_since(const MediaTime& earlier) const
{
    return microseconds_ - earlier.microseconds_ + std::llround((rest_ - earlier.rest_) * 1e6);
}

} // namespace qoro
