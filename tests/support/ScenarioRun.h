#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qoro::test
{

/// Runs a scenario in JSON and returns its trace, one entry per line, without line breaks.
std::vector<std::string> trace_of(std::string_view scenario);

/// The lines of a trace of one kind ("player"), in order.
std::vector<std::string> of_kind(const std::vector<std::string>& trace, std::string_view what);

/// Runs a scenario of an ordinary ad in manual mode.
/// @param steps content of the "steps" list, without brackets
/// @param ad additional properties of the ad, each followed by a comma; may be empty
/// @param further additional keys of the scenario, each followed by a comma; may be empty
std::vector<std::string> manual_run(std::string_view steps, std::string_view ad = "", std::string_view further = "");

/// The value at a JSON path ("/views/btnMute/frame") of the last snapshot of a trace, as compact JSON; "absent" if
/// missing.
std::string in_snapshot(const std::vector<std::string>& trace, const std::string& path);

/// The error of reading a scenario; empty if it is valid.
std::string complaint_about(std::string_view scenario);

} // namespace qoro::test
