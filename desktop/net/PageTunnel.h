#pragma once

#include "desktop/glib/Owned.h"
#include "kit/NetworkZone.h"

#include <atomic>
#include <cstddef>
#include <functional>
#include <string>

typedef struct _GCancellable GCancellable;
typedef struct _GIOStream GIOStream;
typedef struct _GSocketConnectable GSocketConnectable;
typedef struct _GSocketConnection GSocketConnection;

namespace qoro
{

/// One connection of a page through the proxy: a SOCKS handshake, a connection to an allowed server, then a relay in
/// both directions.
class PageTunnel
{
public:
    /// Shared by all tunnels of a proxy.
    struct Rules {
        std::string user;
        std::string password;
        std::atomic<NetworkZone> reach = NetworkZone::Public;
        /// Called on the tunnels' threads.
        std::function<void(const std::string& where)> on_refusal;
    };

    /// @param rules must outlive the tunnel
    PageTunnel(Rules& rules, ObjectRef<GSocketConnection> page);
    PageTunnel(const PageTunnel&) = delete;
    PageTunnel& operator=(const PageTunnel&) = delete;

    /// Runs the tunnel to its end. Blocks; to be called on a thread of its own.
    void run();
    /// Stops the tunnel if it leads further inside than `reach`. Any thread may call this; it returns at once.
    void keep_within(NetworkZone reach);
    /// Stops the tunnel. Any thread may call this; it returns at once.
    void stop();

private:
    /// A SOCKS request; target is null if it was invalid.
    struct Asked {
        ObjectRef<GSocketConnectable> target = {};
        std::string where;
    };

    bool read(unsigned char* to, std::size_t count);
    bool write(const unsigned char* bytes, std::size_t count);
    bool log_in();
    Asked read_request();
    bool connect(const Asked& asked);
    void answer_request(unsigned char status);
    static void connecting(GSocketConnection* server, PageTunnel* tunnel);
    void relay();

    Rules& rules_;
    const ObjectRef<GSocketConnection> page_;
    ObjectRef<GSocketConnection> server_;
    const ObjectRef<GCancellable> stop_;
    std::atomic<NetworkZone> zone_ = NetworkZone::Public;
    /// The last address that was refused because it lies too far inside; empty if none was.
    std::string refused_;
};

} // namespace qoro
