#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qoro
{

/// Writable folders for files that last no longer than the program, best first: those with room for `bytes`, in the
/// order temporary folder, user runtime folder, user cache folder, /dev/shm; then the others by descending free space.
/// Empty if no folder is writable.
std::vector<std::string> scratch_folders(std::uint64_t bytes);

} // namespace qoro
