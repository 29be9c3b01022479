#pragma once

#include <string>

namespace qoro
{

/// Makes an ordinary scenario of a recording: the ad with its device and host, the network's answers, the measured
/// texts, the behaviour of the videos, and a step for each touch, turn, change of the volume, departure, message of a
/// page and deed of the host. It can be changed, and steps can be left out, as of any scenario.
///
/// It loses what a simulated session does not have: times within an event, delays of the machine's timers, elements and
/// further consequences of a touched page, pages in the browser, pictures' contents, and a player's reports beyond
/// loading, stalls and failures.
/// @param text of the recording
/// @param file name for error messages
/// @return the scenario's text
/// @throws InputError
std::string scenario_of_recording(const std::string& text, const std::string& file);

} // namespace qoro
