#pragma once

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

/// One connection of a page through the proxy: asked for by SOCKS, made to what may be reached, then bytes both ways.
class PageTunnel
{
public:
    /// What all tunnels of a proxy share.
    struct Rules {
        std::string user;
        std::string password;
        std::atomic<NetworkZone> reach = NetworkZone::Public;
        /// Called on the tunnels' threads.
        std::function<void(const std::string& where)> on_refusal;
    };

    /// @param rules outlive it
    /// @param page is taken
    PageTunnel(Rules& rules, GSocketConnection* page);
    ~PageTunnel();
    PageTunnel(const PageTunnel&) = delete;
    PageTunnel& operator=(const PageTunnel&) = delete;

    /// All of it; waits, on a thread of its own.
    void run();
    /// Any thread: ends it soon when it leads further inside.
    void keep_within(NetworkZone reach);
    /// Any thread: ends it soon.
    void stop();

private:
    /// What a request asks for.
    struct Asked {
        GSocketConnectable* target = nullptr;
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
    GSocketConnection* const page_;
    GSocketConnection* server_ = nullptr;
    GCancellable* const stop_;
    std::atomic<NetworkZone> zone_ = NetworkZone::Public;
    /// The last address that lies too far inside; empty for none.
    std::string refused_;
};

} // namespace qoro
