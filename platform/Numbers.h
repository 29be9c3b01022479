#pragma once

#include "platform/Export.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace QORO_EXPORT_TO_DESKTOP qoro
{

/// Truncates toward zero to 32 bits. NaN becomes 0; values out of range are clamped.
std::int32_t truncated(double number);
/// As truncated, to 64 bits.
std::int64_t truncated_to_64(double number);

/// The leading decimal integer of a text, after optional blanks and a sign, clamped to 64 bits; 0 without one.
std::int64_t leading_integer(std::string_view text);

/// Formats with a fixed number of decimals and a point in every locale: "30.000000". NaN is "nan", the infinities are
/// "inf" and "-inf".
std::string fixed_text(double number, int decimals);

/// The shortest text that parses back to the same number. NaN is "nan", the infinities are "inf" and "-inf".
std::string shortest_text(double number);
std::string shortest_text(float number);

} // namespace qoro
