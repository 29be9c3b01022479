#pragma once

#include <string_view>

namespace qoro
{

/// Identifies the sources that decide how a session runs, which numbers its states have and what rules find in it:
/// hexadecimal digits, of static storage duration. Two builds of the same sources have the same.
std::string_view fingerprint_of_sources();

} // namespace qoro
