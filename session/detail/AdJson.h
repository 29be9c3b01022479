#pragma once

// For this folder's .cpp files alone: no header of the session names a library.

#include "session/AdFile.h"
#include "session/detail/Json.h"

namespace qoro::detail
{

/// Reads an ad that stands inside another file.
/// @param file what to call that file in an error
/// @param path where the ad stands in it ("/ad"); empty for the whole file
/// @throws InputError
std::shared_ptr<QoroVideoAd> read_ad(const Json& json, const std::string& file, const std::string& path, AdTypes types);

} // namespace qoro::detail
