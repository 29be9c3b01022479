#include "kit/CountDownLook.h"

#include <algorithm>
#include <cmath>

namespace qoro
{

namespace
{
/// What tenths of a second, subtracted again and again in single precision, may be too much.
constexpr double Blur = 0.001;
constexpr double MostSeconds = 1e9;
} // namespace

long whole_seconds_left(double seconds)
{
    if (!(seconds > 1))
        return 1;
    return static_cast<long>(std::ceil(std::min(seconds, MostSeconds) - Blur));
}

} // namespace qoro
