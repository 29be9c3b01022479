#pragma once

#include "platform/Foundation.h"
#include "record/Recorder.h"
#include "record/Replayer.h"

#include <functional>
#include <string>

namespace qoro
{

// Stand-ins (kit/StandIn.h) of a session that is recorded or replayed. The machine calls for one while the session
// hands something over; its screen is the session's own, so it reaches the session as a touch does.

/// As show_calendar_stand_in().
void show_calendar_stand_in(Recorder& recorder, const std::string& event);
/// As show_address_stand_in(). What follows on the viewer's return is the machine's work again.
void show_address_stand_in(Recorder& recorder, const NSURL& address, const std::function<void()>& closed);
/// Shows the recorded stand-ins on a replay, on the platform of the session.
void replay_stand_ins(Replayer& replayer, Platform& platform);

} // namespace qoro
