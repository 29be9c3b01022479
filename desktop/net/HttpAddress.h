#pragma once

#include <string>

typedef struct _GUri GUri;

namespace qoro
{

/// Null when the text is no address of HTTP or HTTPS with a host. The caller frees it.
GUri* http_uri(const std::string& address);

bool is_http_address(const std::string& address);

} // namespace qoro
