#pragma once

#include <cstdint>
#include <string>

namespace qoro
{

/// A number truncated toward zero to 32 bits. Not-a-number is 0; what lies outside is held at the nearest end.
std::int32_t truncated(double number);

/// A number with a fixed count of decimals, with a point whatever the locale: "30.000000". Not-a-number is "nan", the
/// infinities "inf" and "-inf".
std::string fixed_text(double number, int decimals);

/// The shortest text that reads back as the same number.
std::string shortest_text(double number);
std::string shortest_text(float number);

} // namespace qoro
