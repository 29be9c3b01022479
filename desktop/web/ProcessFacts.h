#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace qoro
{

/// What the system says of processes and threads (Linux, proc(5)). Callable from any thread; nothing is kept open.

/// The memory that is a process's own, in bytes: what is mapped from files is not counted, what was swapped out is.
/// Absent for a process that is not there, or has ended and is still listed.
std::optional<std::uint64_t> own_memory(int process);

/// Seconds that a process, or one of its threads, has worked; absent for one that is not there.
std::optional<double> worked_seconds(int process);
std::optional<double> worked_seconds(int process, int thread);

/// Calls for each descendant of a process, in no order, with its number and its name (at most 15 bytes).
void for_each_descendant(int process, const std::function<void(int descendant, const std::string& name)>& found);

/// Calls for each thread of a process, with its number and its name (at most 15 bytes).
void for_each_thread(int process, const std::function<void(int thread, const std::string& name)>& found);

/// The inode of a process's namespace of process numbers, and its number in the innermost one; 0 where it can't be
/// read.
std::uint64_t number_space(int process);
int innermost_number(int process);

} // namespace qoro
