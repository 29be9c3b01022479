#include "formats/Base64.h"

#include <cstddef>
#include <cstdint>

namespace qoro
{

namespace
{
constexpr std::string_view Digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
} // namespace

std::string to_base64(std::string_view bytes)
{
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        std::uint32_t group = 0;
        for (std::size_t i = 0; i < 3; ++i)
            group = group << 8 | (at + i < bytes.size() ? static_cast<unsigned char>(bytes[at + i]) : 0U);
        for (std::size_t i = 0; i < 4; ++i)
            text += at + i <= bytes.size() ? Digits[group >> (18 - 6 * i) & 0x3F] : '=';
    }
    return text;
}

std::optional<std::string> from_base64(std::string_view text)
{
    if (text.size() % 4 != 0)
        return std::nullopt;
    const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with("=") ? 1 : 0;
    std::string bytes;
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::size_t digit = i >= text.size() - padding ? 0 : Digits.find(text[i]);
        if (digit == std::string_view::npos)
            return std::nullopt;
        bits = (bits << 6) | static_cast<std::uint32_t>(digit);
        if (i % 4 == 3)
            for (const unsigned shift : {16U, 8U, 0U})
                bytes += static_cast<char>((bits >> shift) & 0xFF);
    }
    bytes.resize(bytes.size() - padding);
    return bytes;
}

} // namespace qoro
