#include "kit/CountDownLook.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qoro
{

namespace
{

constexpr double FullTurn = 2 * std::numbers::pi;
constexpr double Top = 0.75 * FullTurn;

/// Seconds: accumulated error of subtracting tenths of a second in single precision.
constexpr double Blur = 0.001;
constexpr double MostSeconds = 1e9;

/// Width of the dark margin outside the ring, in points; keeps the ring visible over a light video.
constexpr double Rim = 1.5;
/// Minimum distance between the digits and the ring, in points.
constexpr double Gap = 2;

// Arial's digits, as fractions of the font size.
constexpr double DigitWidth = 0.556;
constexpr double DigitHeight = 0.716;
/// Maximum font size, as a fraction of the disc's radius; a single digit would fill the ring otherwise.
constexpr double LargestFont = 0.9;

} // namespace

long whole_seconds_left(double seconds)
{
    if (!(seconds > 1))
        return 1;
    return static_cast<long>(std::ceil(std::min(seconds, MostSeconds) - Blur));
}

CountDownLook count_down_look(CGSize size, double ring_width, double seconds, double full)
{
    CountDownLook look;
    look.disc_radius = std::max(std::min(size.width, size.height) / 2, 0.0);
    look.ring_width = std::clamp(ring_width, 0.0, std::max(look.disc_radius - Rim, 0.0));
    look.ring_radius = std::max(look.disc_radius - Rim - look.ring_width / 2, 0.0);
    const double left = full > 0 && seconds > 0 ? std::min(seconds / full, 1.0) : 0;
    look.arc_begin = Top - left * FullTurn;
    look.arc_end = Top;

    look.seconds = std::to_string(whole_seconds_left(seconds));
    const double room = std::max(look.ring_radius - look.ring_width / 2 - Gap, 0.0);
    const double across = DigitWidth * static_cast<double>(look.seconds.size());
    look.font_size = std::min(look.disc_radius * LargestFont, 2 * room / std::hypot(across, DigitHeight));
    look.baseline = look.font_size * DigitHeight / 2;
    return look;
}

} // namespace qoro
