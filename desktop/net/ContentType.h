#pragma once

#include <string_view>

namespace qoro
{

/// Content type of a file, derived from its extension, ignoring case; "application/octet-stream" for unknown ones.
const char* content_type_of(std::string_view path);

} // namespace qoro
