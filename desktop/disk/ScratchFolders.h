#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qoro
{

/// Folders for files that last no longer than the program: those that can be written to, with room for so many bytes
/// first (the temporary folder, the user's folders for a run and for caches, the machine's memory), then the others,
/// the one with the most room in front. Empty when there is none at all.
std::vector<std::string> scratch_folders(std::uint64_t bytes);

} // namespace qoro
