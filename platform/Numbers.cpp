#include "platform/Numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace qoro
{

namespace
{

// Numbers within these magnitudes are written in full, others with an exponent.
constexpr double LeastWrittenInFull = 1e-6;
constexpr double FirstWithExponent = 1e15;

template <typename Number>
std::string shortest(Number number)
{
    if (std::isnan(number))
        return "nan";
    const auto magnitude = static_cast<double>(std::fabs(number));
    const bool in_full = magnitude == 0 || (magnitude >= LeastWrittenInFull && magnitude < FirstWithExponent);
    std::array<char, 64> text;
    const auto end = in_full ? std::to_chars(text.begin(), text.end(), number, std::chars_format::fixed)
                             : std::to_chars(text.begin(), text.end(), number);
    return {text.begin(), end.ptr};
}

/// Whether a number's product with a million is exact in a double, so that rounding it gives six decimals: a number of
/// single precision has 24 significant bits, and a million has 14.
bool has_exact_millionths(double number)
{
    return std::fabs(number) < 1e9 && static_cast<double>(static_cast<float>(number)) == number;
}

std::string text_of_millionths(bool negative, std::uint64_t millionths)
{
    std::array<char, 32> text;
    text[0] = '-';
    char* const point = std::to_chars(text.begin() + (negative ? 1 : 0), text.end() - 7, millionths / 1'000'000).ptr;
    std::uint64_t rest = millionths % 1'000'000;
    for (char* digit = point + 6; digit != point; rest /= 10)
        *digit-- = static_cast<char>('0' + rest % 10);
    *point = '.';
    return {text.begin(), point + 7};
}

template <typename Integer>
Integer truncated_to(double number)
{
    using Limits = std::numeric_limits<Integer>;
    if (std::isnan(number))
        return 0;
    if (number <= static_cast<double>(Limits::min()))
        return Limits::min();
    if (number >= static_cast<double>(Limits::max()))
        return Limits::max();
    return static_cast<Integer>(number);
}

} // namespace

std::int32_t truncated(double number)
{
    return truncated_to<std::int32_t>(number);
}

std::int64_t truncated_to_64(double number)
{
    return truncated_to<std::int64_t>(number);
}

std::int64_t leading_integer(std::string_view text)
{
    using Limits = std::numeric_limits<std::int64_t>;
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    const bool minus = text.starts_with('-');
    if (minus || text.starts_with('+'))
        text.remove_prefix(1);
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc::invalid_argument)
        return 0;
    if (error != std::errc() || number > static_cast<std::uint64_t>(Limits::max()))
        return minus ? Limits::min() : Limits::max();
    return minus ? -static_cast<std::int64_t>(number) : static_cast<std::int64_t>(number);
}

std::string fixed_text(double number, int decimals)
{
    if (std::isnan(number))
        return "nan";
    if (decimals == 6 && has_exact_millionths(number))
        return text_of_millionths(std::signbit(number),
                                  static_cast<std::uint64_t>(std::nearbyint(std::fabs(number) * 1e6)));
    const auto write = [&](char* begin, std::size_t size) {
        return std::string(begin, std::to_chars(begin, begin + size, number, std::chars_format::fixed, decimals).ptr);
    };
    std::array<char, 64> short_text;
    if (std::fabs(number) < FirstWithExponent && decimals <= 40)
        return write(short_text.data(), short_text.size());
    // The greatest double has 309 digits before the point.
    std::string text(static_cast<std::size_t>(decimals) + 312, '\0');
    return write(text.data(), text.size());
}

std::string shortest_text(double number)
{
    return shortest(number);
}

std::string shortest_text(float number)
{
    return shortest(number);
}

} // namespace qoro
