#pragma once

#include <string_view>

namespace qoro
{

/// The content type of a file by its name's extension, whatever its case; "application/octet-stream" for others.
const char* content_type_of(std::string_view path);

} // namespace qoro
