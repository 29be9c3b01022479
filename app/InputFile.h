#pragma once

#include <string>

namespace qoro
{

/// The whole text of a file; "-" reads standard input.
/// @throws InputError when it cannot be read, or is too large to be anything that this program reads
std::string read_input_file(const std::string& path);

} // namespace qoro
