#pragma once

#include <string_view>

namespace qoro
{

/// Name of the compiled-in picture that starts at this address; empty for any other address.
std::string_view embeddedImageName(const unsigned char* bytes);

} // namespace qoro
