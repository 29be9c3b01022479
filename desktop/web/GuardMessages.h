#pragma once

// The names of the messages between the engine and the guard of its page (guard/).

namespace qoro
{

/// To the guard, without content: answered at once, without content, by the thread that runs the page's script.
inline constexpr const char* guard_question = "are you there";
/// From the guard: the address (s) of a request that it has not let through.
inline constexpr const char* guard_refused = "refused";

} // namespace qoro
