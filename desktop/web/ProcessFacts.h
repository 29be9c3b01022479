#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace qoro
{

/// Process and thread information from the system (Linux, proc(5)). Any thread may call these functions; no file stays
/// open.

/// Private memory of a process in bytes, including swapped pages, without file mappings. Absent if the process does not
/// exist or is a zombie.
std::optional<std::uint64_t> own_memory(int process);

/// Processor seconds that a process, or one of its threads, has used; absent if it does not exist.
std::optional<double> worked_seconds(int process);
std::optional<double> worked_seconds(int process, int thread);

/// Calls `found` for each descendant of a process, in no particular order, with its PID and name (at most 15 bytes).
void for_each_descendant(int process, const std::function<void(int descendant, const std::string& name)>& found);

/// Calls `found` for each thread of a process, with its thread ID and name (at most 15 bytes).
void for_each_thread(int process, const std::function<void(int thread, const std::string& name)>& found);

/// The inode of a process's PID namespace, and its PID in the innermost namespace; 0 if they cannot be read.
std::uint64_t number_space(int process);
int innermost_number(int process);

} // namespace qoro
