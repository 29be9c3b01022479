#pragma once

#include "kit/NetworkZone.h"
#include "platform/Value.h"

#include <functional>
#include <string>

namespace qoro
{

/// Finds the first address in a next-video record (docs/creative.md, playNextVideo) that its page must not reach: a
/// file, or an address in a more inward zone than the page's (leads_inward). Null without one.
///
/// Each address is checked as what the ad uses it for: the video, a tracker with its macros replaced, or the target of
/// a button. Titles, messages, telephone numbers and keys that the ad ignores are no addresses.
/// @param page address of the page
/// @param open the innermost zone that is always permitted
/// @param expand replaces the macros of a tracker
NSString inward_address_in(const NSDictionary& record, const std::string& page, NetworkZone open,
                           const std::function<NSString(const NSString&)>& expand);

} // namespace qoro
