#pragma once

#include <string>

typedef struct _GUri GUri;

namespace qoro
{

/// Parses an HTTP or HTTPS address with a host.
/// @return null for anything else; the caller unrefs it
GUri* http_uri(const std::string& address);

/// Whether http_uri() accepts the address.
bool is_http_address(const std::string& address);

} // namespace qoro
