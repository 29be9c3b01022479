#pragma once

#include <functional>
#include <string>
#include <vector>

namespace qoro::test
{

/// Runs something on a thread that has a network of its own, which leads nowhere: whatever is done there, and on
/// threads that are begun there, meets only what is there. Servers on every address of that machine can be reached
/// at the addresses that it is given.
/// @param addresses of IPv4, as many as four
/// @return false where this machine lets no test have such a network; then nothing has run
bool in_own_network(const std::vector<std::string>& addresses, const std::function<void()>& run);

} // namespace qoro::test
