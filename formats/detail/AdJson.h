#pragma once

// Only for this folder's .cpp files: public headers of the session do not expose the JSON library.

#include "formats/AdFile.h"
#include "formats/detail/Json.h"

namespace qoro::detail
{

/// Reads an ad embedded in another file.
/// @param file name of that file for error messages
/// @param path JSON path of the ad in it ("/ad"); empty for the whole file
/// @throws InputError
std::shared_ptr<QoroVideoAd> read_ad(const Json& json, const std::string& file, const std::string& path, AdTypes types);

} // namespace qoro::detail
