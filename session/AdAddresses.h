#pragma once

#include "Base/VideoPlayer/QoroVideoAd.h"

#include <functional>
#include <string>
#include <string_view>

namespace qoro
{

/// What is done with an address of an ad.
enum class AdAddressUse {
    /// Fetched or played, and shown.
    Content,
    /// Fetched so that a server hears of it; may hold macros.
    Tracker,
    /// Opened in a browser or handed to the system when the viewer asks for it; of any scheme.
    Target,
};

/// Goes through every address of an ad; the entries "c" of tracking lists are none.
/// @param visit gets the address's use, its JSON path ("/arrayCloseTrackingUrls/0") and its text, and gives the text
///        that takes its place
void rewrite_addresses(QoroVideoAd& ad,
                       const std::function<std::string(AdAddressUse, const std::string&, const std::string&)>& visit);

/// The letters before an address's first colon; empty for an address without a scheme.
std::string_view scheme_of_address(std::string_view address);

/// Whether an address needs a server's address before it: one without a scheme ("clip.mp4", "/t/start?x", "?x").
bool is_relative_address(std::string_view address);

/// An address as it is on a server: a relative one with the server's before it, and what no address may hold (blanks,
/// letters beyond ASCII) escaped; any other as it stands.
/// @param server "http://127.0.0.1:41234"
std::string address_on_server(std::string_view address, const std::string& server);

/// The path of an address that address_on_server has made for a server; empty for any other address.
std::string path_on_server(std::string_view address, const std::string& server);

} // namespace qoro
