#pragma once

#include <cstddef>

namespace qoro::test
{

/// How often memory was asked for since the program's start.
std::size_t allocations_so_far();

} // namespace qoro::test
