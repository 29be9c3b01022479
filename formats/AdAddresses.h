#pragma once

#include "Base/VideoPlayer/QoroVideoAd.h"
#include "platform/Export.h"

#include <functional>
#include <string>
#include <string_view>

namespace QORO_EXPORT_TO_DESKTOP qoro
{

/// How an address of an ad is used.
enum class AdAddressUse {
    /// Fetched or played, then shown.
    Content,
    /// Requested to notify a server; may contain macros.
    Tracker,
    /// Opened in a browser or passed to the system on a click-through; any scheme.
    Target,
};

/// Visits every non-empty address of an ad and replaces it with the visitor's result. The "c" entries of tracking lists
/// are not addresses and are skipped.
/// @param visit receives the address's use, its JSON path ("/arrayCloseTrackingUrls/0") and its text; returns the
///        replacement
void rewrite_addresses(QoroVideoAd& ad,
                       const std::function<std::string(AdAddressUse, const std::string&, const std::string&)>& visit);

/// As rewrite_addresses, without replacing anything.
void visit_addresses(const QoroVideoAd& ad,
                     const std::function<void(AdAddressUse, const std::string&, const std::string&)>& visit);

/// Makes an address that names no server (AddressParts::names_no_server) absolute on a server and percent-escapes what
/// a URL must not contain (blanks, controls, non-ASCII bytes). Any other address is returned unchanged.
/// @param server "http://127.0.0.1:41234"
std::string address_on_server(std::string_view address, const std::string& server);

} // namespace qoro
