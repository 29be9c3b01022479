#pragma once

#include <functional>
#include <string>
#include <vector>

namespace qoro::test
{

/// Runs a function on a new thread in its own network namespace (unshare(2), CLONE_NEWNET), which threads started from
/// there inherit. The namespace has only a loopback device, with these addresses and 127.0.0.1: servers that listen on
/// all addresses are reachable at each of them, and nothing outside is. Blocks until the function returns.
/// @param addresses IPv4, at most four
/// @return false if the machine does not allow a network namespace; then the function has not run
bool in_own_network(const std::vector<std::string>& addresses, const std::function<void()>& run);

} // namespace qoro::test
