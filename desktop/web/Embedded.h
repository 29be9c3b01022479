#pragma once

#include <string_view>

namespace qoro
{

/// The WebKit web process extension (guard/PageGuard.cpp), compiled in: the bytes of a shared library.
std::string_view page_guard();

} // namespace qoro
