#include "vast/Texts.h"

#include "platform/AddressParts.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace qoro::vast
{

namespace
{

constexpr std::string_view Blanks = " \t\r\n";

bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

bool is_number(std::string_view text)
{
    return std::ranges::all_of(text, is_digit) && !text.empty();
}

/// Digits with an optional fraction.
std::optional<double> decimal_in(std::string_view text)
{
    const std::size_t point = text.find('.');
    if (!is_number(text.substr(0, point)) || (point != std::string_view::npos && !is_number(text.substr(point + 1))))
        return std::nullopt;
    double value = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
    if (read.ec != std::errc())
        return std::nullopt;
    return value;
}

} // namespace

std::string_view trimmed(std::string_view text)
{
    const std::size_t begin = text.find_first_not_of(Blanks);
    if (begin == std::string_view::npos)
        return {};
    return text.substr(begin, text.find_last_not_of(Blanks) + 1 - begin);
}

std::optional<double> time_in(std::string_view text)
{
    const std::string_view time = trimmed(text);
    const std::size_t first = time.find(':');
    const std::size_t second = first == std::string_view::npos ? first : time.find(':', first + 1);
    if (second == std::string_view::npos)
        return std::nullopt;
    const std::string_view hours = time.substr(0, first);
    const std::string_view minutes = time.substr(first + 1, second - first - 1);
    const std::string_view seconds = time.substr(second + 1);
    if (!is_number(hours) || hours.size() > 3 || !is_number(minutes) || minutes.size() != 2 ||
        !is_number(seconds.substr(0, 2)) || seconds.size() < 2 || (seconds.size() > 2 && seconds[2] != '.'))
        return std::nullopt;
    const auto h = whole_number_in(hours);
    const auto m = whole_number_in(minutes);
    const auto s = decimal_in(seconds);
    if (!h || !m || !s || *m > 59 || *s >= 60)
        return std::nullopt;
    return *h * 3600 + *m * 60 + *s;
}

std::optional<Offset> offset_in(std::string_view text)
{
    const std::string_view offset = trimmed(text);
    if (!offset.ends_with('%')) {
        const auto time = time_in(offset);
        return time ? std::optional(Offset{*time, false}) : std::nullopt;
    }
    const auto percent = decimal_in(offset.substr(0, offset.size() - 1));
    if (!percent || *percent > 100)
        return std::nullopt;
    return Offset{*percent, true};
}

std::optional<int> whole_number_in(std::string_view text)
{
    const std::string_view number = trimmed(text);
    int value = 0;
    if (!is_number(number) || std::from_chars(number.data(), number.data() + number.size(), value).ec != std::errc())
        return std::nullopt;
    return value;
}

std::optional<int> position_in(std::string_view text)
{
    const auto position = whole_number_in(text);
    return position && *position > 0 ? position : std::nullopt;
}

std::optional<double> number_in(std::string_view text)
{
    return decimal_in(trimmed(text));
}

std::optional<bool> boolean_in(std::string_view text)
{
    const std::string_view word = trimmed(text);
    if (equal_names(word, "true") || word == "1")
        return true;
    if (equal_names(word, "false") || word == "0")
        return false;
    return std::nullopt;
}

bool is_address(std::string_view text)
{
    // The scheme and the authority, which end before the next slash; queries are long.
    const std::size_t slashes = text.find("//");
    if (slashes == std::string_view::npos)
        return false;
    const AddressParts parts(text.substr(0, text.find('/', slashes + 2)));
    return parts.is_web() && !parts.host().empty();
}

bool has_blanks(std::string_view address)
{
    // Compilers vectorise the minimum, and no loop that ends early; addresses rarely have a blank.
    unsigned char smallest = 0xff;
    for (const char c : address)
        smallest = std::min(smallest, static_cast<unsigned char>(c));
    return smallest <= ' ' || address.find('\x7f') != std::string_view::npos;
}

std::string requestable(std::string_view address)
{
    constexpr std::array<char, 17> Digits{"0123456789ABCDEF"};
    std::string result;
    result.reserve(address.size());
    for (const char c : address) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte > ' ' && byte < 0x7f) {
            result += c;
            continue;
        }
        result += '%';
        result += Digits[byte >> 4U];
        result += Digits[byte & 15U];
    }
    return result;
}

std::string lower(std::string_view text)
{
    std::string result(text);
    std::ranges::transform(result, result.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return result;
}

bool equal_names(std::string_view one, std::string_view other)
{
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::ranges::equal(one, other, {}, lower, lower);
}

} // namespace qoro::vast
