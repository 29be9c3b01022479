#pragma once

#include <cstddef>
#include <string>

namespace qoro
{

/// Bytes; larger input files are rejected.
inline constexpr std::size_t LargestInput = 64u << 20;

/// Reads a whole file; "-" reads standard input.
/// @throws InputError when the file cannot be read or exceeds LargestInput
std::string read_input_file(const std::string& path);

} // namespace qoro
