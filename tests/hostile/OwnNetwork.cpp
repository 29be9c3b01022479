#include "tests/hostile/OwnNetwork.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sched.h>
#include <unistd.h>

namespace qoro::test
{

namespace
{

/// Without the privilege for a network namespace, creates a user namespace first, which grants it.
bool unshare_network()
{
    if (unshare(CLONE_NEWNET) == 0)
        return true;
    const uid_t user = getuid();
    const gid_t group = getgid();
    if (unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0)
        return false;
    std::ofstream("/proc/self/setgroups") << "deny";
    std::ofstream("/proc/self/uid_map") << "0 " << user << " 1";
    std::ofstream("/proc/self/gid_map") << "0 " << group << " 1";
    return true;
}

} // namespace

std::string enter_own_network()
{
    if (!unshare_network())
        return std::string("no network namespace can be made: ") + std::strerror(errno);
    // A route of type "local" makes an address one of this machine's own.
    if (std::system("ip link set lo up && ip route add local 0.0.0.0/0 dev lo && ip -6 route add local ::/0 dev lo") !=
        0)
        return "the network of the namespace can't be set up with ip";
    return "";
}

} // namespace qoro::test
