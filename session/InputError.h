#pragma once

#include <stdexcept>
#include <string>

namespace qoro
{

/// A file that a person wrote can't be used. The text is one line: the file, the JSON path where it is known, and what
/// was expected: `ad.json: /iCloseBtnCountdown: expected a whole number, got "five"`.
struct InputError : std::runtime_error {
    using std::runtime_error::runtime_error;
    InputError(const std::string& file, const std::string& path, const std::string& complaint)
        : std::runtime_error(file + ": " + (path.empty() ? "" : path + ": ") + complaint)
    {
    }
};

} // namespace qoro
