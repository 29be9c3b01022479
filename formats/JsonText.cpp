#include "formats/JsonText.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace qoro
{

namespace
{

/// Length in bytes of the UTF-8 character at the front; 0 when it is malformed.
std::size_t character_length(std::string_view text)
{
    const auto byte = [text](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
    const auto continues = [&](std::size_t from, std::size_t to) {
        for (std::size_t i = from; i < to; ++i)
            if ((byte(i) & 0xC0U) != 0x80U)
                return false;
        return true;
    };
    const unsigned lead = byte(0);
    if (lead < 0x80)
        return 1;
    if (lead >= 0xC2 && lead < 0xE0)
        return continues(1, 2) ? 2 : 0;
    if (lead >= 0xE0 && lead < 0xF0) {
        const bool overlong = lead == 0xE0 && byte(1) < 0xA0;
        const bool surrogate = lead == 0xED && byte(1) >= 0xA0;
        return continues(1, 3) && !overlong && !surrogate ? 3 : 0;
    }
    if (lead >= 0xF0 && lead < 0xF5) {
        const bool overlong = lead == 0xF0 && byte(1) < 0x90;
        const bool beyond = lead == 0xF4 && byte(1) >= 0x90;
        return continues(1, 4) && !overlong && !beyond ? 4 : 0;
    }
    return 0;
}

void append_control(std::string& out, unsigned char control)
{
    static constexpr std::string_view Digits = "0123456789abcdef";
    switch (control) {
    case '\b':
        out += "\\b";
        break;
    case '\f':
        out += "\\f";
        break;
    case '\n':
        out += "\\n";
        break;
    case '\r':
        out += "\\r";
        break;
    case '\t':
        out += "\\t";
        break;
    default:
        out += "\\u00";
        out += Digits[control >> 4];
        out += Digits[control & 0xF];
    }
}

/// Whether a byte is written as it is, and is not part of a longer character.
constexpr bool is_plain(unsigned char byte)
{
    return byte >= 0x20 && byte < 0x80 && byte != '"' && byte != '\\';
}

constexpr auto Plain = [] {
    std::array<bool, 256> plain{};
    for (std::size_t byte = 0; byte < plain.size(); ++byte)
        plain[byte] = is_plain(static_cast<unsigned char>(byte));
    return plain;
}();

/// Whether eight bytes are all plain, tested together, since most text is plain in longer runs. XOR with eight quotes,
/// or eight backslashes, turns one of these into a byte below 1.
bool are_plain(const char* eight_bytes)
{
    constexpr std::uint64_t Each = 0x0101010101010101;
    constexpr std::uint64_t Highest = 0x80 * Each;
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, eight_bytes, sizeof bytes);
    const auto some_below = [](std::uint64_t of, std::uint64_t bound) { return (of - bound * Each) & ~of & Highest; };
    return ((bytes & Highest) | some_below(bytes, 0x20) | some_below(bytes ^ ('"' * Each), 1) |
            some_below(bytes ^ ('\\' * Each), 1)) == 0;
}

/// Length of the longest beginning of the text whose bytes are all plain.
std::size_t plain_length(std::string_view text)
{
    std::size_t length = 0;
    while (text.size() - length >= 8 && are_plain(text.data() + length))
        length += 8;
    while (length < text.size() && Plain[static_cast<unsigned char>(text[length])])
        ++length;
    return length;
}

template <typename Number>
void append_finite(std::string& out, Number number)
{
    // Large enough for the shortest form of any number, and for the plain form within the bounds below.
    std::array<char, 64> text;
    char* const begin = text.data();
    char* const end = begin + text.size();
    const Number size = std::fabs(number);
    const bool plain = size == 0 || (size >= Number(1e-6) && size < Number(1e15));
    const auto written = plain ? std::to_chars(begin, end, number, std::chars_format::fixed)
                               : std::to_chars(begin, end, number, std::chars_format::scientific);
    out.append(begin, written.ptr);
}

template <typename Number>
void append_number(std::string& out, Number number)
{
    if (!std::isfinite(number))
        out += "null";
    else
        append_finite(out, number == 0 ? Number(0) : number); // no "-0"
}

} // namespace

void append_json_text(std::string& out, std::string_view text)
{
    // Most texts need no escape.
    if (plain_length(text) == text.size()) {
        const std::size_t begin = out.size();
        out.append(text.size() + 2, '"');
        text.copy(out.data() + begin + 1, text.size());
        return;
    }
    out += '"';
    std::size_t plain = 0; // begin of the run not yet copied
    std::size_t i = 0;
    const auto flush = [&] { out.append(text.substr(plain, i - plain)); };
    while (true) {
        i += plain_length(text.substr(i));
        if (i == text.size())
            break;
        const auto byte = static_cast<unsigned char>(text[i]);
        const std::size_t length = byte < 0x80 ? 0 : character_length(text.substr(i));
        if (length > 0) {
            i += length;
            continue;
        }
        flush();
        if (byte == '"' || byte == '\\') {
            out += '\\';
            out += text[i];
        } else if (byte < 0x20) {
            append_control(out, byte);
        } else {
            out += "\xEF\xBF\xBD";
        }
        plain = ++i;
    }
    flush();
    out += '"';
}

void append_json(std::string& out, double number)
{
    append_number(out, number);
}

void append_json(std::string& out, float number)
{
    append_number(out, number);
}

void append_json(std::string& out, std::int64_t number)
{
    std::array<char, 24> text;
    const auto written = std::to_chars(text.data(), text.data() + text.size(), number);
    out.append(text.data(), written.ptr);
}

void append_json(std::string& out, const Value& value)
{
    if (value.is_null()) {
        out += "null";
    } else if (value.is_bool()) {
        out += value.boolValue() ? "true" : "false";
    } else if (value.is_integer()) {
        append_json(out, value.integer());
    } else if (value.is_double()) {
        append_json(out, value.doubleValue());
    } else if (value.is_string()) {
        append_json_text(out, value.text());
    } else if (value.is_array()) {
        out += '[';
        bool first = true;
        for (const Value& each : value.values()) {
            if (!first)
                out += ',';
            first = false;
            append_json(out, each);
        }
        out += ']';
    } else {
        out += '{';
        bool first = true;
        for (const NSDictionary::Entry& each : value.entries()) {
            if (!first)
                out += ',';
            first = false;
            append_json_text(out, each.key);
            out += ':';
            append_json(out, each.value);
        }
        out += '}';
    }
}

void append_json(std::string& out, const Field::Content& content)
{
    struct Writer {
        std::string& out;
        void operator()(std::nullptr_t) const { out += "null"; }
        void operator()(bool flag) const { out += flag ? "true" : "false"; }
        void operator()(std::int64_t number) const { append_json(out, number); }
        void operator()(double number) const { append_json(out, number); }
        void operator()(float number) const { append_json(out, number); }
        void operator()(std::string_view text) const { append_json_text(out, text); }
        void operator()(const Value* value) const { append_json(out, *value); }
    };
    std::visit(Writer{out}, content);
}

void append_seconds(std::string& out, std::int64_t microseconds)
{
    if (microseconds < 0)
        out += '-';
    const auto positive = static_cast<std::uint64_t>(microseconds < 0 ? -microseconds : microseconds);
    std::array<char, 32> text;
    char* end = std::to_chars(text.begin(), text.end(), positive / 1'000'000).ptr;
    if (auto fraction = static_cast<std::uint32_t>(positive % 1'000'000); fraction != 0) {
        std::ptrdiff_t digits = 6;
        if (fraction % 1000 == 0) { // whole milliseconds, as most times
            fraction /= 1000;
            digits -= 3;
        }
        for (; fraction % 10 == 0; fraction /= 10)
            --digits;
        *end++ = '.';
        for (char* digit = end + digits; digit != end; fraction /= 10)
            *--digit = static_cast<char>('0' + fraction % 10);
        end += digits;
    }
    out.append(text.data(), end);
}

} // namespace qoro
