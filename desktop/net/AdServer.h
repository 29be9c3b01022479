#pragma once

#include "desktop/net/AdServerHit.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace qoro
{

/// Content of an ad server.
struct AdServerContent {
    /// Folder whose files are served. Nothing outside it is served, even through symbolic links. Empty: no files.
    std::string folder;
    /// The kit's script library: JavaScript, served under ScriptPath and under every path that ends in "/mraid.js",
    /// unless the folder contains a file of that name.
    std::string script;
};

/// A small HTTP server for an ad's own folder, on 127.0.0.1 and a free port. It runs on its own thread, so it can
/// answer while the main thread blocks on it.
class AdServer
{
public:
    /// Path of the kit's script library.
    static constexpr const char* ScriptPath = "/qoro-player.js";

    using OnHit = std::function<void(const AdServerHit&)>;

    /// @param on_hit called for every request once its status is known, on the server's thread; may be null
    explicit AdServer(AdServerContent content, OnHit on_hit = nullptr);
    /// Closes every connection.
    ~AdServer();

    /// Whether the server listens; if not, error() holds the reason.
    bool listens() const;
    /// Why the server does not listen, in words; empty if it does.
    const std::string& error() const;
    /// "http://127.0.0.1:41234", without a trailing slash. Empty if the server does not listen.
    std::string base() const;
    /// Answers requests for trackers with status 204 from now on; before, they are requests for files.
    /// @param paths of the trackers ("/t/start"), as they appear in the address before any query. A path with a macro
    ///        ("/t/{CurrentTime}") matches every path that begins with the part before the macro
    void set_trackers(std::vector<std::string> paths);
    /// All requests so far, oldest first. Any thread may call this.
    std::vector<AdServerHit> hits() const;

private:
    class Worker;
    std::unique_ptr<Worker> worker_;
};

} // namespace qoro
