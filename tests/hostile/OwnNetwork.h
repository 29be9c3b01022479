#pragma once

#include <string>

namespace qoro::test
{

/// Takes this process, and all that it starts from now on, into a network namespace of its own, in which every address
/// there is leads to this process: whatever asks for anything is seen, and nothing leaves the machine. To be called
/// before the process has a second thread.
/// @return empty, or why this machine does not allow it
std::string enter_own_network();

} // namespace qoro::test
