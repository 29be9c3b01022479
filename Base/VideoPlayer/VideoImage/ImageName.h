#pragma once

#include <optional>
#include <span>
#include <string_view>

namespace qoro
{

/// A compiled-in picture.
struct EmbeddedPicture {
    /// The array's name, which is the picture's accessibility identifier.
    std::string_view name;
    /// A PNG file, which lives as long as the program.
    const unsigned char* bytes;
    /// Accessible name, in English, of a control that shows the picture; null for a background.
    const char* meaning = nullptr;
    /// Whether a toggle that shows the picture is on; absent for any other control.
    std::optional<bool> on = {};
};

/// All compiled-in pictures.
std::span<const EmbeddedPicture> embeddedPictures();

/// Name of the compiled-in picture that starts at this address; empty for any other address.
std::string_view embeddedImageName(const unsigned char* bytes);

} // namespace qoro
