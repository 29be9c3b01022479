#pragma once

#include "desktop/glib/Owned.h"

#include <cstdint>
#include <functional>
#include <string>

typedef struct _GCancellable GCancellable;
typedef struct _SoupSession SoupSession;

namespace qoro
{

class VideoCache;

/// Fills a cache before ads need its videos. Blocks the calling thread, which must be the one that created the object.
class VideoDownload
{
public:
    /// Time limits of a download.
    struct Limits {
        /// Seconds without data after which a download fails.
        unsigned silent_seconds = 15;
        /// Maximum seconds for a whole video.
        double all_seconds = 600;
        /// Minimum speed in bytes per second, averaged over each speed_seconds; 0: none.
        double least_speed = 10'000;
        /// Seconds; longer than silent_seconds, so that silence is reported as such.
        double speed_seconds = 20;
    };
    /// Outcome of a download.
    struct Result {
        /// In words; empty if the cache now has a copy.
        std::string error = {};
        /// Bytes.
        std::uint64_t length = 0;
        /// Whether the cache already had a copy; then no request was sent.
        bool was_there = false;
    };

    VideoDownload();
    explicit VideoDownload(const Limits& limits);
    VideoDownload(const VideoDownload&) = delete;
    VideoDownload& operator=(const VideoDownload&) = delete;

    /// Makes sure that the cache has a copy. Only a complete answer becomes one: status 200, a Content-Length that the
    /// body matches, no content coding, and a content type other than text/html.
    /// @param address http or https
    /// @param received called with the bytes so far and those of the whole video; may be empty
    Result fetch(VideoCache& cache, const std::string& address,
                 const std::function<void(std::uint64_t bytes, std::uint64_t all)>& received = nullptr);
    /// Makes the running download, and all later ones, fail; nothing of them stays in the cache. Any thread may call
    /// this.
    void cancel();

private:
    Result receive(VideoCache& cache, const std::string& address,
                   const std::function<void(std::uint64_t bytes, std::uint64_t all)>& received);

    const Limits limits_;
    const ObjectRef<SoupSession> session_;
    const ObjectRef<GCancellable> cancelled_;
};

} // namespace qoro
