#pragma once

#include <cstdint>
#include <string>

typedef struct _SoupSession SoupSession;

namespace qoro
{

class VideoCache;

/// Fills a cache ahead of the ads that want its videos. It works on the thread that calls it, which must be the one
/// that made it, and waits there.
class VideoDownload
{
public:
    struct Limits {
        /// Seconds that a server may send nothing.
        unsigned silent_seconds = 15;
        /// Seconds for all of a video.
        double all_seconds = 600;
    };
    struct Result {
        /// In words; empty when there is a copy now.
        std::string error = {};
        /// Bytes.
        std::uint64_t length = 0;
        /// Whether the copy was there already; nothing was asked of the server then.
        bool was_there = false;
    };

    VideoDownload();
    explicit VideoDownload(const Limits& limits);
    ~VideoDownload();
    VideoDownload(const VideoDownload&) = delete;
    VideoDownload& operator=(const VideoDownload&) = delete;

    /// Sees to it that there is a copy. Only an answer that is whole becomes one: of status 200, as many bytes as it
    /// said that there would be, unpacked, and no page in a video's place.
    /// @param address of http or https
    Result fetch(VideoCache& cache, const std::string& address);

private:
    Result receive(VideoCache& cache, const std::string& address);

    const Limits limits_;
    SoupSession* const session_;
};

} // namespace qoro
