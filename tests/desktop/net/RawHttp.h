#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace qoro::test
{

/// Sends bytes to a loopback port.
/// @return everything received until the peer closes
std::string converse(int port, const std::string& request);

/// The port of "http://127.0.0.1:41234".
int port_of(const std::string& base);

/// A server whose answers are arbitrary bytes written by a function, so that it can stall, truncate and lie. The
/// function runs on a thread of the connection's own and receives the request head; the connection is closed when it
/// returns.
class RawServer
{
public:
    class Connection
    {
    public:
        explicit Connection(int socket) : socket_(socket) {}
        /// @return false if the client has closed the connection
        bool send(const std::string& bytes) const;
        /// The head of the client's next request; empty if it has closed the connection.
        std::string next_head() const;
        /// Blocks until the client closes its side or the server is destroyed.
        void wait_for_close() const;

    private:
        int socket_;
    };
    using Answer = std::function<void(const std::string& head, const Connection& connection)>;

    /// @param everywhere listen on all addresses, not only on 127.0.0.1; for in_own_network()
    explicit RawServer(Answer answer, bool everywhere = false);
    ~RawServer();

    int port() const { return port_; }
    std::string base() const { return "http://127.0.0.1:" + std::to_string(port_); }
    int connections() const { return connections_; }

private:
    void accept_all();

    Answer answer_;
    int listener_;
    int port_ = 0;
    std::atomic<int> connections_ = 0;
    std::thread acceptor_;
};

} // namespace qoro::test
