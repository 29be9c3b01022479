#pragma once

namespace qoro
{

/// The seconds that a countdown shows: rounded up, so that it says 1 until the very end.
long whole_seconds_left(double seconds);

} // namespace qoro
