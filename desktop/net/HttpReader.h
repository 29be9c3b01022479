#pragma once

#include "desktop/glib/Owned.h"
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

/// Reads a file from an HTTP server, from any byte offset. After a connection breaks or times out, it continues at the
/// same byte, a limited number of times.
///
/// read() blocks. Only one thread may read at a time; stop() and resume() may be called by any thread. One thread must
/// create and destroy the object, while no read is in progress.
class HttpReader
{
public:
    /// Limits that bound the effort for one file.
    struct Limits {
        /// Seconds without data after which a connection times out.
        unsigned silent_seconds = 10;
        /// Maximum number of consecutive requests that yield no byte.
        int attempts = 2;
        /// Maximum number of broken connections; one more is allowed for each 64 KiB received.
        std::uint64_t breaks = 20;
        /// Maximum size of the file in bytes; a larger file is refused.
        std::uint64_t size = std::numeric_limits<std::uint64_t>::max();
    };
    /// Result of a read: data, end of file, stop() was called, or an error (see error()).
    enum class Outcome { Bytes, End, Stopped, Failed };

    /// @param address http or https
    explicit HttpReader(const std::string& address);
    HttpReader(const std::string& address, const Limits& limits);
    ~HttpReader();
    HttpReader(const HttpReader&) = delete;
    HttpReader& operator=(const HttpReader&) = delete;

    /// Reads the next available bytes, at most `room`, and stores their count in `got`. A position that does not follow
    /// the previous read needs a new request.
    Outcome read(std::uint64_t position, char* to, std::size_t room, std::size_t& got);
    /// Reason of the last Failed outcome, in words. After a refusal the server is not contacted again.
    const std::string& error() const { return error_; }

    /// Bytes of the file; absent before the server has answered, and if it does not state the size.
    /// Any thread may call this and can_jump().
    std::optional<std::uint64_t> size() const;
    /// Whether the server probably supports range requests; false before it has answered.
    bool can_jump() const;

    /// Aborts the current read. It and all further ones return Stopped until resume() is called. Any thread may call
    /// this.
    void stop();
    /// Permits reading after stop(). Any thread may call this.
    void resume();

private:
    enum class Connection { Open, Stopped, Broken, Refused };

    Connection connect(std::uint64_t position);
    Connection take_answer(std::uint64_t position);
    Connection skip_to(std::uint64_t position);
    void learn(std::optional<std::uint64_t> size, bool can_jump);
    Connection refuse(std::string reason);
    /// @param reason used unless stop() caused the break
    Connection broken(const char* reason);
    void disconnect();
    bool is_stopped();

    const Limits limits_;
    const std::optional<HttpAddress> address_;
    const NetworkZone reach_;
    const ObjectRef<SoupSession> session_;
    /// The pending request; stream_ is its answer.
    ObjectRef<SoupMessage> message_;
    ObjectRef<GInputStream> stream_;
    std::optional<RequestGuard> guard_;
    bool refused_ = false;
    /// Offset in the file of the stream's next byte.
    std::uint64_t at_ = 0;
    /// Strong validator of the file's version; empty if the server sent none.
    std::string version_;
    std::uint64_t received_ = 0;
    std::uint64_t breaks_ = 0;
    std::string error_;
    mutable std::mutex mutex_;
    // Guarded by mutex_; only the reading thread changes the first two.
    std::optional<std::uint64_t> size_;
    bool can_jump_ = false;
    bool stopped_ = false;
    /// Cancels the pending request; each request has its own.
    ObjectRef<GCancellable> cancellable_;
};

} // namespace qoro
