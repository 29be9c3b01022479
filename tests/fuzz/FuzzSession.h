#pragma once

#include "formats/InputError.h"
#include "formats/Scenario.h"
#include "platform/Value.h"

#include <string_view>

namespace qoro::fuzz
{

/// Shortens a scenario so that it takes a few milliseconds, runs it, and checks its trace.
void run_session(Scenario scenario);

/// Raises too short heartbeat periods in a script's arguments, which would only cost time.
void shorten(const NSArray& arguments);

/// The values of a JSON list; null when the text is not one.
NSArray values_of(std::string_view json);

/// Requires that an error's text is one line.
void require_one_line(const InputError& error);

/// Requires that a text is valid JSON.
void require_json(std::string_view text);

} // namespace qoro::fuzz
