#pragma once

#include "platform/Value.h"

#include <string>
#include <string_view>

namespace qoro
{

// Pure texts around addresses.

/// A text as a part of an address: everything but letters, digits and -._~ as percent escapes of its bytes.
std::string percent_encoded(std::string_view text);

/// What stands before the first colon, in lower case; empty for a null address.
std::string scheme_of(const NSURL& address);

/// The identifier in an address of the software centre (AppStream's "appstream:" and an identifier, with or without two
/// slashes before it and one after it); null for any other address.
NSString appstream_id_of(const NSURL& address);

/// An address as a browser's bar shows it: the host and what follows, without scheme and user, and without the slash of
/// a site's first page. Empty for a null address.
std::string shown_address(const NSURL& address);

/// The address of a message to a telephone number (RFC 5724).
/// @param number digits and plus signs, also with "tel:" before them; null for none
/// @param body null for none
NSURL message_address(const NSString& number, const NSString& body);

} // namespace qoro
