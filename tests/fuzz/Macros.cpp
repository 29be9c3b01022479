// A tracker's address with macros. Lines of the input: address, the kit's cookie, the device's identifier, the
// application's name, the player's time, the video's duration, the session; missing lines are absent values.

#include "tests/fuzz/FuzzTarget.h"
#include "tests/support/AdSession.h"

#include <algorithm>

namespace qoro
{

namespace
{

NSString take_line(std::string_view& rest)
{
    if (rest.empty())
        return nullptr;
    const std::size_t length = std::min(rest.find('\n'), rest.size());
    const NSString line = rest.substr(0, length);
    rest.remove_prefix(std::min(length + 1, rest.size()));
    return line;
}

double take_number(std::string_view& rest)
{
    return Value(take_line(rest)).doubleValue();
}

} // namespace

void fuzz::run_input(std::string_view input)
{
    const NSString address = take_line(input);
    const NSString cookie = take_line(input);
    World world = AdSession::manual_world();
    world.device.facts.imei = take_line(input);
    world.device.facts.display_name = take_line(input);

    AdSession session(world);
    session.open();
    session->strCookieGuid = cookie;
    session.player_is_at(take_number(input));
    session->fTotalTime = Value(take_line(input)).floatValue();
    session->dSessionId = take_number(input);
    session.forget();

    const NSString expanded = session->getTrackingUniqueInfo(address);
    require(static_cast<bool>(expanded) == static_cast<bool>(address), "an address expands to an address");
    require(address.contains("{") || expanded == address, "an address without macros stays as it is");
    session.platform().dispatch([&] { session->sendTrackingUrls({address, "c", nullptr, 3}); });
    const bool sent = address && expanded.text() != "c";
    require(session.lines("request").size() == (sent ? 1U : 0U), "an address is asked for once");
    session.let_pass(1);
}

} // namespace qoro
