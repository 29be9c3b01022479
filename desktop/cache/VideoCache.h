#pragma once

#include "platform/Ports.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

class CacheFolder;
struct CacheRecord;

/// A copy of a video.
struct CachedVideo {
    std::string address;
    std::string path;
    /// Bytes.
    std::uint64_t length = 0;
    /// Nanoseconds since 1970.
    std::int64_t last_use = 0;
};

/// Copies of videos in a folder that any number of processes use at once.
///
/// A copy is two files, named by a digest of its address: the video, and a record of its length and of a digest of its
/// content. The record is written last and removed first, so a video without one is no copy. Both are changed only by
/// who holds the folder's lock; looking a copy up takes no lock.
///
/// A copy that is looked up must have its record's address and length, and be the file that was finished then,
/// unchanged since, as its inode and its time of change tell. A file of which these differ (one that came from a
/// backup, one that was written to) is read whole: when it has the record's content it is known again, otherwise it is
/// removed. Nothing is read of a copy that nobody touched.
///
/// What is not the cache's own is left alone, and no link is followed.
class VideoCache final : public VideoCacheStore
{
public:
    struct Options {
        /// Made when the first video comes.
        std::string folder = default_folder();
        /// Bytes of all copies together; those that were not used for the longest time go first. What is still coming
        /// in is not counted.
        std::uint64_t most_bytes = 256'000'000;
        /// Gets one line when the folder can't be used, once; may be null.
        std::function<void(const std::string&)> warn = {};
    };

    /// "qoro-ad/videos" in the user's cache directory.
    static std::string default_folder();

    explicit VideoCache(Options options);

    const std::string& folder() const { return options_.folder; }
    std::uint64_t most_bytes() const { return options_.most_bytes; }

    /// Looking a copy up is a use of it. A folder that is missing or unusable holds no copies.
    NSString path_for(const NSString& address) override;

    /// All copies, the last used one first. None where there is no folder.
    /// @throws std::system_error when the folder can't be read
    std::vector<CachedVideo> videos() const;

    struct Removed {
        std::size_t videos = 0;
        std::uint64_t bytes = 0;
    };
    /// Removes all copies, and what was left of those that never became whole.
    /// @throws std::system_error when the folder can't be read or written
    Removed empty();

private:
    friend class IncomingVideo;

    NSString look_up(const std::string& address);
    /// Keeps a finished file as the copy of an address.
    void keep(const CacheFolder& folder, const std::string& part, CacheRecord record);
    void warn(const std::string& line);

    Options options_;
    bool warned_ = false;
};

/// A video on its way into the cache. Unless it is kept, nothing of it stays.
class IncomingVideo
{
public:
    /// @param cache outlives it
    /// @throws std::system_error when the folder can't be made or written
    IncomingVideo(VideoCache& cache, const std::string& address);
    ~IncomingVideo();
    IncomingVideo(const IncomingVideo&) = delete;
    IncomingVideo& operator=(const IncomingVideo&) = delete;

    /// Adds to its end.
    /// @throws std::system_error when it can't be written, as on a full disk
    void write(std::string_view bytes);
    /// Bytes so far.
    std::uint64_t length() const;
    /// It is whole: makes it the copy of its address, in the place of any other, and makes room for it.
    /// @throws std::system_error
    void keep();

private:
    struct Part;

    VideoCache& cache_;
    const std::string address_;
    std::unique_ptr<Part> part_;
};

} // namespace qoro
