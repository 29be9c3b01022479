#pragma once

#include <cstddef>

// What the engine and the guard of its page (guard/) say to each other.

namespace qoro
{

/// To the guard, without content: answered at once, without content, by the thread that runs the page's script.
inline constexpr const char* guard_question = "are you there";
/// From the guard: what the page has not got, and the address or the reason (ss).
inline constexpr const char* guard_refused = "refused";
/// From the guard: a message of the page's script (s), JSON of at most longest_message bytes. Answered by (bs): whether
/// the command was carried out, and its result as JSON or what was wrong with it.
inline constexpr const char* guard_message = "message";
inline constexpr const char* guard_answer = "answer";

/// From the guard, when its page is there: the inode of the namespace of its process, and the process's number in it
/// (tu).
inline constexpr const char* guard_process = "process";

/// Bytes of JSON in UTF-8.
inline constexpr std::size_t longest_message = 64 * 1024;

/// What a guard is started with: whether its pages are creatives, which have a bridge; the innermost NetworkZone that
/// every page reaches.
inline constexpr const char* guard_settings = "(bi)";

} // namespace qoro
