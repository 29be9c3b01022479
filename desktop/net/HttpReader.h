#pragma once

#include "desktop/net/RequestGuard.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <mutex>
#include <optional>
#include <string>

typedef struct _GInputStream GInputStream;
typedef struct _SoupSession SoupSession;

namespace qoro
{

/// Reads a file of an HTTP server from any of its bytes on. A connection that breaks is taken up again at the byte
/// where it broke, a few times; so is one on which nothing comes for a while.
///
/// Reading waits, on the thread that reads; one thread at a time, stop() and resume() excepted. To be made and
/// destroyed by one thread, while nobody reads.
class HttpReader
{
public:
    struct Limits {
        /// Seconds that a server may send nothing.
        unsigned silent_seconds = 10;
        /// How often in a row the server may be asked without a byte that comes of it.
        int attempts = 2;
        /// How many connections may break, and one more with each 64 KiB that have come.
        std::uint64_t breaks = 20;
        /// Bytes of a file; a larger one is refused.
        std::uint64_t size = std::numeric_limits<std::uint64_t>::max();
    };
    enum class Outcome { Bytes, End, Stopped, Failed };

    /// @param address of http or https
    explicit HttpReader(const std::string& address);
    HttpReader(const std::string& address, const Limits& limits);
    ~HttpReader();
    HttpReader(const HttpReader&) = delete;
    HttpReader& operator=(const HttpReader&) = delete;

    /// Takes the next bytes that are there, at most `room`; their count is in `got`. A position that does not follow
    /// the last one costs a request.
    Outcome read(std::uint64_t position, char* to, std::size_t room, std::size_t& got);
    /// In words; of the last Failed. What a server refuses, it is not asked for again.
    const std::string& error() const { return error_; }

    /// Bytes of the file; absent before the server has answered, and when it does not tell.
    /// Any thread, as can_jump().
    std::optional<std::uint64_t> size() const;
    /// Whether the server is likely to send from any byte on; false before it has answered.
    bool can_jump() const;

    /// Any thread: breaks off what is being read, and everything that is read before resume().
    void stop();
    void resume();

private:
    enum class Connection { Open, Stopped, Broken, Refused };

    Connection connect(std::uint64_t position);
    Connection take_answer(std::uint64_t position);
    Connection skip_to(std::uint64_t position);
    void learn(std::optional<std::uint64_t> size, bool can_jump);
    Connection refuse(std::string reason);
    /// @param reason unless it was broken off here
    Connection broken(const char* reason);
    void disconnect();
    bool is_stopped();

    const Limits limits_;
    GUri* const uri_;
    const NetworkZone reach_;
    SoupSession* const session_;
    /// The request under way, with its answer.
    SoupMessage* message_ = nullptr;
    GInputStream* stream_ = nullptr;
    std::optional<RequestGuard> guard_;
    bool refused_ = false;
    /// The next byte of the stream.
    std::uint64_t at_ = 0;
    /// What the server calls this version of the file; empty for nothing that could be relied on.
    std::string version_;
    std::uint64_t received_ = 0;
    std::uint64_t breaks_ = 0;
    std::string error_;
    mutable std::mutex mutex_;
    // Under the mutex; the first two are changed by the thread that reads alone.
    std::optional<std::uint64_t> size_;
    bool can_jump_ = false;
    bool stopped_ = false;
    /// Of the request under way; another one for each.
    GCancellable* cancellable_ = nullptr;
};

} // namespace qoro
