#pragma once

#include "platform/Value.h"
#include "session/InputError.h"
#include "session/Scenario.h"

#include <string_view>

namespace qoro::fuzz
{

/// Runs a scenario after it has been shortened to what takes some milliseconds, and looks at its trace.
void run_session(Scenario scenario);

/// Keeps what a script says from a heartbeat that only takes longer.
void shorten(const NSArray& arguments);

/// The values of a JSON list; null when the text is none.
NSArray values_of(std::string_view json);

void require_one_line(const InputError& error);

/// Requires that a text is JSON.
void require_json(std::string_view text);

} // namespace qoro::fuzz
