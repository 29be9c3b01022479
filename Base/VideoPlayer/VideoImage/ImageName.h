#pragma once

#include <string_view>

namespace qoro
{

/// The name of the compiled-in picture whose bytes begin here; empty when it is none of them.
std::string_view embeddedImageName(const unsigned char* bytes);

} // namespace qoro
