#include "vast/MacroText.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>

namespace qoro::vast
{

namespace
{

constexpr std::array<bool, 256> plain_characters()
{
    std::array<bool, 256> plain = {};
    for (const char c : std::string_view("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.!~*'()"))
        plain[static_cast<unsigned char>(c)] = true;
    return plain;
}

constexpr std::array<bool, 256> Plain = plain_characters();

bool is_plain(char c)
{
    return Plain[static_cast<unsigned char>(c)];
}

/// HH%3AMM%3ASS.mmm
void append_clock(std::string& out, std::int64_t milliseconds)
{
    append_padded(out, milliseconds / 3'600'000, 2);
    out += "%3A";
    append_padded(out, milliseconds / 60'000 % 60, 2);
    out += "%3A";
    append_padded(out, milliseconds / 1000 % 60, 2);
    out += '.';
    append_padded(out, milliseconds % 1000, 3);
}

bool degrees(std::string& out, const std::optional<double>& value, double limit)
{
    if (!value || !(std::abs(*value) <= limit))
        return false;
    constexpr double Millionths = 1e6;
    const std::int64_t rounded = std::llround(*value * Millionths);
    if (rounded < 0)
        out += '-';
    append_number(out, std::abs(rounded) / 1'000'000);
    std::int64_t fraction = std::abs(rounded) % 1'000'000;
    if (fraction == 0)
        return true;
    std::size_t decimals = 6;
    for (; fraction % 10 == 0; fraction /= 10)
        --decimals;
    out += '.';
    append_padded(out, fraction, decimals);
    return true;
}

} // namespace

void append_encoded(std::string& out, std::string_view text)
{
    constexpr std::string_view Digits = "0123456789ABCDEF";
    for (std::size_t at = 0; at < text.size();) {
        std::size_t end = at;
        while (end < text.size() && is_plain(text[end]))
            ++end;
        out.append(text, at, end - at);
        for (at = end; at < text.size() && !is_plain(text[at]); ++at) {
            const auto byte = static_cast<unsigned char>(text[at]);
            const std::array<char, 3> escape = {'%', Digits[byte >> 4], Digits[byte & 15]};
            out.append(escape.data(), escape.size());
        }
    }
}

void append_number(std::string& out, std::int64_t number)
{
    std::array<char, 24> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    out.append(digits.data(), end);
}

void append_padded(std::string& out, std::int64_t number, std::size_t width)
{
    std::array<char, 24> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    const auto length = static_cast<std::size_t>(end - digits.data());
    if (length < width)
        out.append(width - length, '0');
    out.append(digits.data(), length);
}

bool append_time(std::string& out, const std::optional<double>& seconds)
{
    constexpr double Limit = 1e12;
    if (!seconds || !(*seconds >= 0 && *seconds < Limit))
        return false;
    append_clock(out, std::llround(*seconds * 1000));
    return true;
}

bool append_timestamp(std::string& out, const std::optional<double>& seconds, int zone)
{
    using namespace std::chrono;
    constexpr double Limit = 1e12;
    if (!seconds || !(std::abs(*seconds) < Limit) || zone <= -24 * 60 || zone >= 24 * 60)
        return false;
    const sys_time<milliseconds> local(milliseconds(std::llround(*seconds * 1000)) + minutes(zone));
    const auto day = floor<days>(local);
    if (day < sys_days(year(0) / January / 1) || day > sys_days(year(9999) / December / 31))
        return false;

    const year_month_day date(day);
    append_padded(out, static_cast<int>(date.year()), 4);
    out += '-';
    append_padded(out, static_cast<unsigned>(date.month()), 2);
    out += '-';
    append_padded(out, static_cast<unsigned>(date.day()), 2);
    out += 'T';
    append_clock(out, (local - day).count());
    out += zone < 0 ? "-" : "%2B";
    append_padded(out, std::abs(zone) / 60, 2);
    if (zone % 60 != 0) {
        out += "%3A";
        append_padded(out, std::abs(zone) % 60, 2);
    }
    return true;
}

bool append_place(std::string& out, const std::optional<double>& latitude, const std::optional<double>& longitude)
{
    const std::size_t before = out.size();
    if (degrees(out, latitude, 90)) {
        out += ',';
        if (degrees(out, longitude, 180))
            return true;
    }
    out.resize(before);
    return false;
}

} // namespace qoro::vast
