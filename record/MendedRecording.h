#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qoro
{

/// A recording whose writer was ended in the middle of a write, as far as it can be read.
struct MendedRecording {
    /// The recording up to the last entry that is whole.
    std::string text;
    /// What is left out, and from where; one line.
    std::string lost;
};

/// Mends a recording that was cut off, or in which a part was never written.
/// @param file name for error messages
/// @return absent for a whole recording, and for a text that is none
/// @throws InputError for a recording that has no whole beginning
std::optional<MendedRecording> mended_recording(std::string_view text, const std::string& file);

} // namespace qoro
