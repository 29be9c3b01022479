#pragma once

#include "vast/Resolver.h"

#include <cstddef>
#include <string>

namespace qoro
{

/// Address of the page that the kit makes for an ad of a tag; no server is asked for it. Not https, so that the page
/// may show pictures of http servers. Its host has the network zone of the least inward of the ad's documents.
/// @param n index of the ad in its tag
std::string tag_page_address(const vast::ResolvedAd& ad, std::size_t n);

} // namespace qoro
