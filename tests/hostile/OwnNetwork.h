#pragma once

#include <string>

namespace qoro::test
{

/// Moves this process and all its future child processes into a network namespace in which every address is local: all
/// requests are observable and nothing leaves the machine. Call it before the process starts a second thread.
/// @return empty, or why this machine does not permit it
std::string enter_own_network();

} // namespace qoro::test
