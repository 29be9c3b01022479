#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace qoro
{

/// An HTTP server for the browser of the user who started this program, on 127.0.0.1 and a free port.
///
/// It answers only requests that carry its token, in the query or the header X-Token; that name its own host and port,
/// which a foreign name that leads here does not; and that no other site's page makes. Everything else is refused with
/// 403, 404, 405, 411, 413 or 415 before its body is read. Nothing may be stored, embedded or read by other sites. All
/// functions and handlers belong to the thread that creates the server, and run in its GLib context.
class LocalServer
{
public:
    struct Answer {
        unsigned status = 200;
        /// "text/html; charset=utf-8"
        std::string type = "application/json";
        std::string body = {};
        /// The browser saves the answer as a file of this name; empty: it shows the answer.
        std::string file_name = {};
        /// Content-Security-Policy; empty: nothing may be loaded.
        std::string policy = {};
    };
    struct Route {
        /// "GET" or "POST".
        std::string method;
        /// "/session"
        std::string path;
        /// @param body of a POST: at most MostBody bytes of JSON
        std::function<Answer(const std::string& body)> answer;
    };
    static constexpr std::size_t MostBody = 64U << 10;

    /// @param routes several with the same path have different methods
    /// @param news path of a stream of server-sent events, for GET
    /// @param greeting the first message of each stream
    LocalServer(std::vector<Route> routes, std::string news, std::function<std::string()> greeting);
    ~LocalServer();
    LocalServer(const LocalServer&) = delete;
    LocalServer& operator=(const LocalServer&) = delete;

    /// Why the server does not listen; empty if it does.
    const std::string& error() const;
    /// "http://127.0.0.1:41327/?token=…": where the route "/" is. Secret.
    const std::string& address() const;
    /// Sends a message to every open stream.
    /// @param message one line
    void tell(const std::string& message);

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace qoro
