#pragma once

#include <string_view>

namespace qoro
{

/// The module that WebKit loads into each page's process (guard/PageGuard.cpp), compiled in: the bytes of a shared
/// library.
std::string_view page_guard();

} // namespace qoro
