// A picture's bytes as a server sends them, and the same bytes with correct PNG checksums: a decoder stops at a wrong
// one.

#include "desktop/images/GdkImages.h"
#include "tests/fuzz/FuzzTarget.h"

#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace qoro
{

namespace
{

std::uint32_t number_at(const std::string& bytes, std::size_t at)
{
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < 4; ++i)
        number = number << 8 | static_cast<unsigned char>(bytes[at + i]);
    return number;
}

/// PNG chunks: length, type of four bytes, content, and CRC of type and content (PNG, section 5.3).
std::string with_right_checksums(std::string bytes)
{
    constexpr std::size_t Signature = 8;
    constexpr std::size_t Frame = 12;
    std::size_t at = Signature;
    while (at + Frame <= bytes.size()) {
        const std::size_t length = number_at(bytes, at);
        if (length > bytes.size() - at - Frame)
            break;
        const uLong sum =
            crc32(0, reinterpret_cast<const Bytef*>(bytes.data() + at + 4), static_cast<uInt>(length + 4));
        at += Frame + length;
        for (std::size_t i = 0; i < 4; ++i)
            bytes[at - 1 - i] = static_cast<char>(sum >> (8 * i) & 0xFF);
    }
    return bytes;
}

void decode(const std::string& bytes)
{
    const auto image = GdkImages().decode(NSData(bytes));
    if (!image)
        return;
    const auto& decoded = static_cast<const GdkDecodedImage&>(*image);
    fuzz::require(decoded.width() > 0 && decoded.height() > 0, "a picture has pixels");
    fuzz::require(std::int64_t{decoded.width()} * decoded.height() <= 64'000'000, "a picture's size is bounded");
}

} // namespace

void fuzz::run_input(std::string_view input)
{
    const std::string bytes(input);
    decode(bytes);
    if (bytes.starts_with("\x89PNG"))
        decode(with_right_checksums(bytes));
}

} // namespace qoro
