#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace qoro
{

/// What an ad server serves.
struct AdServerContent {
    /// Folder whose files are served; nothing outside it is, whatever links it holds. Empty for none.
    std::string folder;
    /// Paths that stand for trackers ("/t/start"), as the address names them before any query. They are answered 204. A
    /// path with a macro in it ("/t/{CurrentTime}") stands for every path that begins with what precedes the macro.
    std::vector<std::string> trackers;
    /// The kit's script library: JavaScript, served under ScriptPath and under every path that ends in "/mraid.js",
    /// unless the folder holds a file of that name.
    std::string script;
};

/// One request that the server got.
struct AdServerHit {
    /// Microseconds of the machine's monotonic clock.
    std::int64_t time = 0;
    std::string method;
    /// Path and query as the client sent them.
    std::string target;
    /// The status that it was answered with.
    unsigned status = 0;
    /// Whether it was one of the trackers.
    bool tracker = false;
};

/// A small HTTP server on 127.0.0.1, on a free port, for an ad's own folder. It runs on a thread of its own, so that it
/// answers while the main thread waits for it.
class AdServer
{
public:
    static constexpr const char* ScriptPath = "/qoro-player.js";

    using OnHit = std::function<void(const AdServerHit&)>;

    /// @param on_hit called for every request once its status is settled, on the server's thread; may be null
    explicit AdServer(AdServerContent content, OnHit on_hit = nullptr);
    /// Ends every connection.
    ~AdServer();

    /// Whether it listens; when it does not, error() says why.
    bool listens() const;
    const std::string& error() const;
    /// "http://127.0.0.1:41234", without a slash at the end. Empty when it does not listen.
    std::string base() const;
    /// Every request so far, oldest first. Any thread may ask.
    std::vector<AdServerHit> hits() const;

private:
    class Worker;
    std::unique_ptr<Worker> worker_;
};

} // namespace qoro
