#pragma once

#include <cstddef>
#include <string>

namespace qoro
{

/// Bytes; nothing that this program reads is larger.
inline constexpr std::size_t LargestInput = 64u << 20;

/// The whole text of a file; "-" reads standard input.
/// @throws InputError when it cannot be read, or is too large to be anything that this program reads
std::string read_input_file(const std::string& path);

} // namespace qoro
