#pragma once

#include "Base/VideoPlayer/QoroVideoAd.h"
#include "platform/Export.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace QORO_EXPORT qoro
{

class Desktop;
class DesktopPlatform;

/// Settings of a Preload.
struct PreloadOptions {
    /// Bytes that the video's server must send per second, averaged over each speed_seconds; 0: no minimum.
    double least_speed = 10'000;
    /// Seconds over which the speed is averaged; longer than the 15 seconds after which a silent server is given up.
    double speed_seconds = 20;
    /// Maximum seconds for the whole preload.
    double seconds = 600;
    /// Called while a server sends the video, at most ten times a second, as an event of its own.
    /// @param bytes received so far
    /// @param all bytes of the whole video; 0 while unknown
    std::function<void(std::uint64_t bytes, std::uint64_t all)> on_progress = {};
};

/// Fetches an ad's video and decodes its first picture before the ad opens. It blocks no thread of the host. The ad
/// that opens on the same desktop while this object exists takes the video over, however far it has come: it behaves as
/// without a preload, only sooner.
///
/// A video that the ad may play from the cache (bIsUseVideoCache) is fetched into the cache first, and played from
/// there. Others, and those of a server on this machine, such as a ServedAd's own files, are not cached: they are
/// buffered as by a player.
///
/// It belongs to the desktop's thread, and must not outlive the desktop. It holds a paused player, with its memory and
/// its connections to the server and to the sound.
class Preload
{
public:
    /// @param error why the video cannot be preloaded, one line; empty on success
    using OnDone = std::function<void(const std::string& error)>;

    /// Starts at once.
    /// @param desktop the desktop that will show the ad
    /// @param options limits, and the report of progress
    /// @param ad not changed and not kept
    /// @param on_done called once as an event of its own, unless the ad has taken the video over before, or the preload
    ///        was cancelled; may destroy this object and open the ad; may be empty
    Preload(Desktop& desktop, const QoroVideoAd& ad, OnDone on_done, PreloadOptions options = {});
    /// As above, for programs of this project.
    Preload(DesktopPlatform& platform, const QoroVideoAd& ad, OnDone on_done, PreloadOptions options = {});
    /// Cancels.
    ~Preload();
    Preload(const Preload&) = delete;
    Preload& operator=(const Preload&) = delete;

    /// Ends a download and releases a video that no ad has taken over. on_done is not called any more. A video that is
    /// complete stays in the cache.
    void cancel();
    /// Whether on_done was called with success, and no ad has taken the video over yet.
    bool is_ready() const;

private:
    class Work;

    std::unique_ptr<Work> work_;
};

} // namespace qoro
