#pragma once

#include "platform/Value.h"

#include <string>
#include <string_view>

namespace qoro
{

// Functions on addresses and their parts.

/// Percent-encodes a text as a URI component: every byte except the unreserved characters (RFC 3986, section 2.3).
std::string percent_encoded(std::string_view text);

/// The AppStream identifier in an "appstream:" address, with or without two slashes before and one slash after it; null
/// for any other address.
NSString appstream_id_of(const NSURL& address);

/// An address for display in a browser's bar: without scheme and user, and without the slash of an empty path. Empty
/// for a null address.
std::string shown_address(const NSURL& address);

/// The host and the port of an address, for display; empty for an address without a host.
std::string shown_host(const NSURL& address);

/// An sms: address (RFC 5724).
/// @param number digits and plus signs, optionally preceded by "tel:"; null for none
/// @param body text of the message; null for none
NSURL message_address(const NSString& number, const NSString& body);

} // namespace qoro
