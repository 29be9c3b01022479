#pragma once

// Only for this folder's .cpp files.

#include "formats/Steps.h"
#include "formats/detail/Reader.h"

namespace qoro::detail
{

/// Reads steps embedded in a file; see qoro::read_steps.
/// @throws InputError
std::vector<Step> read_steps(const Reader& list, bool simulated);

} // namespace qoro::detail
