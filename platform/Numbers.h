#pragma once

#include <cstdint>
#include <string>

namespace qoro
{

/// Truncates toward zero to 32 bits. NaN becomes 0; values out of range are clamped.
std::int32_t truncated(double number);

/// Formats with a fixed number of decimals and a point in every locale: "30.000000". NaN is "nan", the infinities are
/// "inf" and "-inf".
std::string fixed_text(double number, int decimals);

/// The shortest text that parses back to the same number. NaN is "nan", the infinities are "inf" and "-inf".
std::string shortest_text(double number);
std::string shortest_text(float number);

} // namespace qoro
