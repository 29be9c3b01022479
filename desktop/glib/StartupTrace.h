#pragma once

#include <string>

namespace qoro
{

/// Records when the steps of the start are reached: each startup_point() that is reached from now on appends a line
/// of JSON to a file, with the seconds of CLOCK_MONOTONIC and the point's name. A first line has the time at which the
/// dynamic linker had finished. Call it once, before other threads start.
/// @param file is overwritten
/// @return false if it cannot be written; errno is the reason
bool trace_startup(const std::string& file);

/// A point of the start is reached. Does nothing unless trace_startup() was called, and for a name that was recorded
/// before. Any thread.
/// @param what a literal
void startup_point(const char* what);

} // namespace qoro
