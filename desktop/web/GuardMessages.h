#pragma once

#include <cstddef>

// Messages between the engine and the guard of its page (guard/). GVariant formats are in parentheses.

namespace qoro
{

/// To the guard, without content. The thread that runs the page's script replies at once, without content.
inline constexpr const char* guard_question = "are you there";
/// From the guard: the kind of what was refused to the page, and the address or the reason (ss).
inline constexpr const char* guard_refused = "refused";
/// From the guard: a message of the page's script (s), at most longest_message bytes of JSON. The reply (bs) says
/// whether the command was carried out, and contains its result as JSON or the error.
inline constexpr const char* guard_message = "message";
inline constexpr const char* guard_answer = "answer";

/// From the guard: a report of the page's script: a PageReport::Kind, message, file (empty when unknown), line (0 when
/// unknown), and the number of reports that this one represents (yssxx).
inline constexpr const char* guard_report = "report";
inline constexpr const char* guard_report_format = "(yssxx)";

/// From the guard when its page is created: the inode of its process's PID namespace, and the process's PID in it (tu).
inline constexpr const char* guard_process = "process";

/// Bytes of JSON in UTF-8.
inline constexpr std::size_t longest_message = std::size_t{64} * 1024;

/// Initialisation data of a guard: whether its pages are creatives, which have a bridge; the innermost NetworkZone that
/// every page may reach.
inline constexpr const char* guard_settings = "(bi)";

} // namespace qoro
