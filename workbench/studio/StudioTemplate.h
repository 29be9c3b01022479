#pragma once

#include <string_view>

namespace qoro
{

// Files of this folder, as they are.

std::string_view studio_html();
std::string_view studio_css();
std::string_view studio_events_js();
std::string_view studio_js();

} // namespace qoro
