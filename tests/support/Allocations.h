#pragma once

#include <cstddef>

namespace qoro::test
{

/// Number of memory allocations since the program's start.
std::size_t allocations_so_far();

} // namespace qoro::test
