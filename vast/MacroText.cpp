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

/// A short text, complete before it is appended.
class Line
{
public:
    void add(std::string_view text)
    {
        for (const char c : text)
            text_[length_++] = c;
    }
    /// With leading zeros.
    /// @param number not negative, of at most that many digits
    void add(std::int64_t number, std::size_t width)
    {
        for (std::size_t digit = length_ + width; digit > length_; number /= 10)
            text_[--digit] = static_cast<char>('0' + number % 10);
        length_ += width;
    }
    /// HH%3AMM%3ASS.mmm
    void add_clock(std::int64_t milliseconds)
    {
        const std::int64_t hours = milliseconds / 3'600'000;
        std::size_t width = 2;
        for (std::int64_t rest = hours / 100; rest > 0; rest /= 10)
            ++width;
        add(hours, width);
        const auto rest = static_cast<std::uint32_t>(milliseconds % 3'600'000);
        add("%3A");
        add(rest / 60'000, 2);
        add("%3A");
        add(rest / 1000 % 60, 2);
        add(".");
        add(rest % 1000, 3);
    }
    std::string_view text() const { return {text_.data(), length_}; }

private:
    std::array<char, 64> text_;
    std::size_t length_ = 0;
};

bool degrees(std::string& out, const std::optional<double>& value, double limit)
{
    if (!value || !(std::abs(*value) <= limit))
        return false;
    const std::int64_t millionths = std::llround(*value * 1e6);
    if (millionths < 0)
        out += '-';
    append_number(out, std::abs(millionths) / 1'000'000);
    const std::int64_t fraction = std::abs(millionths) % 1'000'000;
    if (fraction == 0)
        return true;
    Line line;
    line.add(".");
    line.add(fraction, 6);
    out += line.text().substr(0, line.text().find_last_not_of('0') + 1);
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

bool append_time(std::string& out, const std::optional<double>& seconds)
{
    constexpr double Limit = 1e12;
    if (!seconds || !(*seconds >= 0 && *seconds < Limit))
        return false;
    Line line;
    line.add_clock(std::llround(*seconds * 1000));
    out += line.text();
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
    Line line;
    line.add(static_cast<int>(date.year()), 4);
    line.add("-");
    line.add(static_cast<unsigned>(date.month()), 2);
    line.add("-");
    line.add(static_cast<unsigned>(date.day()), 2);
    line.add("T");
    line.add_clock((local - day).count());
    line.add(zone < 0 ? "-" : "%2B");
    line.add(std::abs(zone) / 60, 2);
    if (zone % 60 != 0) {
        line.add("%3A");
        line.add(std::abs(zone) % 60, 2);
    }
    out += line.text();
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
