// The ad's buttons, a JSON list: all are shown, tapped, and executed one by one, on a phone and on a tablet.

#include "formats/Operations.h"
#include "tests/fuzz/FuzzSession.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/support/AdSession.h"

namespace qoro
{

namespace
{

/// Closes whatever the action opened.
void come_back(AdSession& session)
{
    session.let_pass(0.5);
    session.platform().dispatch([&] {
        for (const char* closing : {"closeInAppWebView", "closeInAppApplication", "didDismissStoreViewController"})
            call_operation(session.controller(), closing, {});
    });
    session.let_pass(0.5);
}

void tap_and_do(const NSArray& buttons, bool phone)
{
    World world = AdSession::manual_world();
    world.device.facts.phone = phone;
    world.device.facts.ios8 = !phone;
    world.device.facts.can_send_text = phone;
    HostSetup host = unguarded_host();
    host.parent = true;
    AdSession session(world, host);
    session.ad().arrayButtonsInfo = buttons;
    session.open();
    session.plays();
    session.tap(session->btnActionOne);
    come_back(session);
    session.tap(session->btnActionTwo);
    come_back(session);
    for (std::size_t i = 0; i < std::min<std::size_t>(buttons.count(), 8); ++i) {
        session.platform().dispatch([&] { session->checkLaunchType(buttons[i].dictionary()); });
        come_back(session);
    }
}

} // namespace

void fuzz::run_input(std::string_view input)
{
    const NSArray buttons = values_of(input);
    if (!buttons)
        return;
    tap_and_do(buttons, true);
    tap_and_do(buttons, false);
}

} // namespace qoro
