#pragma once

#include <string_view>

namespace qoro
{

/// The kit's script library (kit/script), compiled in: JavaScript source in UTF-8.
std::string_view script_library();

} // namespace qoro
