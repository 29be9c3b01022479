#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qoro::test
{

/// Runs a scenario, a JSON text, and gives its trace, one line an entry, without line breaks.
std::vector<std::string> trace_of(std::string_view scenario);

/// Those lines of a trace that are of a kind ("player"), in order.
std::vector<std::string> of_kind(const std::vector<std::string>& trace, std::string_view what);

/// Runs a scenario around an ordinary ad in manual mode.
/// @param ad further properties of the ad, each followed by a comma; may be empty
/// @param steps what stands between the brackets of "steps"
/// @param further further keys of the scenario, each followed by a comma; may be empty
std::vector<std::string> manual_run(std::string_view steps, std::string_view ad = "", std::string_view further = "");

/// The value at a JSON path ("/views/btnMute/frame") of the last snapshot of a trace, as compact JSON; "absent" when
/// there is none.
std::string in_snapshot(const std::vector<std::string>& trace, const std::string& path);

/// What reading a scenario complains of; empty when it complains of nothing.
std::string complaint_about(std::string_view scenario);

} // namespace qoro::test
