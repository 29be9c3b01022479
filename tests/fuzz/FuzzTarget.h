#pragma once

#include <string_view>

namespace qoro::fuzz
{

/// What a fuzz target does with one input, which may be any bytes. One target is linked into each program.
void run_input(std::string_view input);

/// Ends the program with a message when a promise is broken, as a sanitizer does.
void require(bool kept, std::string_view promise);

} // namespace qoro::fuzz
