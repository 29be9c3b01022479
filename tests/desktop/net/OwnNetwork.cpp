#include "tests/desktop/net/OwnNetwork.h"

#include <arpa/inet.h>
#include <cstring>
#include <net/if.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace qoro::test
{

namespace
{

bool set_address(int socket, const std::string& interface, const std::string& address)
{
    ifreq request{};
    interface.copy(request.ifr_name, IFNAMSIZ - 1);
    sockaddr_in to{};
    to.sin_family = AF_INET;
    if (inet_pton(AF_INET, address.c_str(), &to.sin_addr) != 1)
        return false;
    std::memcpy(&request.ifr_addr, &to, sizeof to);
    if (ioctl(socket, SIOCSIFADDR, &request) != 0)
        return false;
    request.ifr_flags = IFF_UP | IFF_RUNNING;
    return ioctl(socket, SIOCSIFFLAGS, &request) == 0;
}

bool enter(const std::vector<std::string>& addresses)
{
    if (unshare(CLONE_NEWNET) != 0)
        return false;
    const int socket = ::socket(AF_INET, SOCK_DGRAM, 0);
    bool done = socket >= 0 && set_address(socket, "lo", "127.0.0.1");
    for (std::size_t n = 0; n < addresses.size(); ++n)
        done = done && set_address(socket, "lo:" + std::to_string(n + 1), addresses[n]);
    if (socket >= 0)
        close(socket);
    return done;
}

} // namespace

bool in_own_network(const std::vector<std::string>& addresses, const std::function<void()>& run)
{
    bool entered = false;
    std::thread([&] {
        entered = enter(addresses);
        if (entered)
            run();
    }).join();
    return entered;
}

} // namespace qoro::test
