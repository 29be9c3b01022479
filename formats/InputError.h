#pragma once

#include <stdexcept>
#include <string>

namespace qoro
{

/// An input file written by a person is unusable. The text is one line: the file, the JSON path where known, and what
/// was expected: `ad.json: /iCloseBtnCountdown: expected a whole number, got "five"`.
struct InputError : std::runtime_error {
    using std::runtime_error::runtime_error;
    InputError(const std::string& file, const std::string& path, const std::string& complaint)
        : std::runtime_error(file + ": " + (path.empty() ? "" : path + ": ") + complaint)
    {
    }
};

} // namespace qoro
