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

/// A cached copy of a video.
struct CachedVideo {
    std::string address;
    std::string path;
    /// Bytes.
    std::uint64_t length = 0;
    /// Nanoseconds since 1970.
    std::int64_t last_use = 0;
};

/// Copies of videos in a folder that any number of processes may use at once.
///
/// A copy consists of two files, named after a digest of its address: the video, and a record of its length and of a
/// digest of its content. The record is written last and removed first, so a video without a record is not a copy. Both
/// change only under the folder's lock; the lookup of an intact copy takes no lock.
///
/// A lookup checks that the record has the address, and that the file has the recorded length, inode and time of
/// modification. If these differ (a file restored from a backup, or one that was written to), the file is read
/// completely: if its digest matches the record, the record is updated, otherwise the copy is removed. An unmodified
/// copy is not read.
///
/// Files that the cache did not create are left alone, and symbolic links are not followed.
class VideoCache final : public VideoCacheStore
{
public:
    /// Settings of a cache.
    struct Options {
        /// Created when the first video is stored.
        std::string folder = default_folder();
        /// Maximum size of all copies together, in bytes; the least recently used copies are removed first. Downloads
        /// in progress do not count.
        std::uint64_t most_bytes = 256'000'000;
        /// Receives one line, once, if the folder cannot be used; may be null.
        std::function<void(const std::string&)> warn = {};
    };

    /// "qoro-ad/videos" in the user's cache directory.
    static std::string default_folder();

    explicit VideoCache(Options options);

    /// Absolute path.
    const std::string& folder() const { return options_.folder; }
    std::uint64_t most_bytes() const { return options_.most_bytes; }

    /// A lookup counts as a use. A folder that is missing or unusable contains no copies.
    NSString path_for(const NSString& address) override;

    /// All copies, most recently used first. Empty if there is no folder.
    /// @throws std::system_error if the folder cannot be read
    std::vector<CachedVideo> videos() const;

    /// Number and total bytes of the removed copies.
    struct Removed {
        std::size_t videos = 0;
        std::uint64_t bytes = 0;
    };
    /// Removes all copies and the remains of incomplete ones.
    /// @throws std::system_error if the folder cannot be read or written
    Removed empty();

private:
    friend class IncomingVideo;

    NSString look_up(const std::string& address);
    /// Makes a finished file the copy of the record's address.
    void keep(const CacheFolder& folder, const std::string& part, CacheRecord record);
    void warn(const std::string& line);

    Options options_;
    bool warned_ = false;
};

/// A video that is being written to the cache. It is discarded unless keep() is called.
class IncomingVideo
{
public:
    /// @param cache must outlive the object
    /// @throws std::system_error if the folder cannot be created or written
    IncomingVideo(VideoCache& cache, const std::string& address);
    ~IncomingVideo();
    IncomingVideo(const IncomingVideo&) = delete;
    IncomingVideo& operator=(const IncomingVideo&) = delete;

    /// Appends bytes.
    /// @throws std::system_error if they cannot be written, for example on a full disk
    void write(std::string_view bytes);
    /// Bytes written so far.
    std::uint64_t length() const;
    /// Marks the video as complete: it replaces any other copy of its address. Older copies are removed if necessary.
    /// @throws std::system_error
    void keep();

private:
    struct Part;

    VideoCache& cache_;
    const std::string address_;
    std::unique_ptr<Part> part_;
};

} // namespace qoro
