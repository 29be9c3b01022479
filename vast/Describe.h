#pragma once

#include "vast/Resolver.h"

#include <string>

namespace qoro::vast
{

/// A resolution as one JSON object, for people and programs (docs/vast.md has its keys). UTF-8, indented, ends with a
/// line feed; bytes that are not UTF-8 are replaced.
std::string describe(const Resolution& resolution);

} // namespace qoro::vast
