#pragma once

// For this folder's .cpp files alone.

#include "session/Steps.h"
#include "session/detail/Reader.h"

namespace qoro::detail
{

/// Reads the steps that stand in a file; see qoro::read_steps.
/// @throws InputError
std::vector<Step> read_steps(const Reader& list, bool simulated);

} // namespace qoro::detail
