#pragma once

#include "platform/Export.h"

#include <stdexcept>
#include <string>

namespace QORO_EXPORT qoro
{

/// An input file written by a person is unusable. The text is one line: the file, the JSON path where known, and what
/// was expected: `ad.json: /iCloseBtnCountdown: expected a whole number, got "five"`.
struct InputError : std::runtime_error {
    using std::runtime_error::runtime_error;
    /// Composes the text.
    /// @param file name of the file, as the user gave it
    /// @param path JSON path of the mistake; empty when it is unknown
    /// @param complaint what was expected, one line
    InputError(const std::string& file, const std::string& path, const std::string& complaint);
};

} // namespace qoro
