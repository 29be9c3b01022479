#pragma once

#include <string_view>

namespace qoro::fuzz
{

/// Runs a fuzz target on one input of arbitrary bytes. Each program links one target.
void run_input(std::string_view input);

/// Aborts the program with a message when a promise is broken, as a sanitizer does.
void require(bool kept, std::string_view promise);

} // namespace qoro::fuzz
