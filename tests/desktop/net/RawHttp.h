#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace qoro::test
{

/// Sends bytes to a port of this machine and reads until the other side closes.
std::string converse(int port, const std::string& request);

/// The port of "http://127.0.0.1:41234".
int port_of(const std::string& base);

/// A server of which every connection is answered by a function that writes what it likes, so that it can stall, cut
/// and lie. The function gets the request's head; the connection is closed when it returns.
class RawServer
{
public:
    class Connection
    {
    public:
        explicit Connection(int socket) : socket_(socket) {}
        /// False when the client has gone.
        bool send(const std::string& bytes) const;
        /// The head of the client's next request; empty when it has gone.
        std::string next_head() const;
        /// Until the client closes its side, or the server ends.
        void wait_for_close() const;

    private:
        int socket_;
    };
    using Answer = std::function<void(const std::string& head, const Connection& connection)>;

    /// @param everywhere whether it listens on all addresses of the machine, for a test with a network of its own
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
