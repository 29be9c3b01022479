#include "host/desktop/Preload.h"

#include "desktop/DesktopPlatform.h"
#include "desktop/cache/VideoDownload.h"
#include "desktop/glib/Liveness.h"
#include "desktop/media/PreparedVideo.h"
#include "desktop/net/TransferWatch.h"
#include "host/desktop/Desktop.h"
#include "kit/NetworkZone.h"
#include "platform/HostCall.h"
#include "platform/Numbers.h"

#include <atomic>
#include <optional>
#include <stop_token>
#include <thread>
#include <utility>

namespace qoro
{

namespace
{
/// Seconds between two reports of the progress.
constexpr double ProgressInterval = 0.1;
} // namespace

class Preload::Work
{
public:
    Work(DesktopPlatform& platform, const QoroVideoAd& ad, OnDone on_done, PreloadOptions options);
    ~Work();
    Work(const Work&) = delete;
    Work& operator=(const Work&) = delete;

    bool is_ready() const { return ready_ && video_ && video_->is_good(); }

private:
    /// What the downloading thread has received.
    struct Received {
        std::atomic<std::uint64_t> bytes = 0;
        std::atomic<std::uint64_t> all = 0;
    };

    void fetch();
    void prepare(const NSURL& source);
    void look();
    void prepared();
    void done(const std::string& error);

    DesktopPlatform& platform_;
    OnDone on_done_;
    const PreloadOptions options_;
    const NSString address_;
    const double began_;
    LeastSpeed speed_;
    std::uint64_t reported_ = 0;
    /// Whether the video could start, and whether the host was notified.
    bool is_prepared_ = false;
    bool ready_ = false;
    std::unique_ptr<PreparedVideo> video_;
    /// Repeats look(); 0 once the preload has ended.
    TimerId looks_ = 0;
    const std::shared_ptr<Received> received_ = std::make_shared<Received>();
    const Liveness<Work> liveness_{*this};
    std::jthread thread_; // last: it ends before the members that it uses
};

Preload::Work::Work(DesktopPlatform& platform, const QoroVideoAd& ad, OnDone on_done, PreloadOptions options)
    : platform_(platform), on_done_(std::move(on_done)), options_(std::move(options)), address_(ad.strVideoUrl),
      began_(platform.loop().now()), speed_(options_.least_speed, options_.speed_seconds)
{
    const PlatformScope scope(platform_);
    looks_ = platform_.loop().start_timer(ProgressInterval, true, [this] { look(); });
    const NSURL source = NSURL::URLWithString(address_);
    const NSString copy = ad.bIsUseVideoCache ? platform_.video_cache().path_for(address_) : NSString();
    if (copy)
        prepare(NSURL::fileURLWithPath(copy));
    else if (video_source(source).location.empty())
        platform_.loop().post(
            liveness_.guard([](Work& self) { self.done("the ad names no video that can be played"); }));
    else if (ad.bIsUseVideoCache && zone_named_by(address_.text()) != NetworkZone::Machine)
        fetch();
    else
        prepare(source);
}

Preload::Work::~Work()
{
    if (looks_ != 0)
        platform_.loop().stop_timer(looks_);
}

/// Fetches the video into the cache, on a thread, and prepares the copy.
void Preload::Work::fetch()
{
    const VideoCache& cache = platform_.cached_videos();
    VideoCache::Options of_cache{.folder = cache.folder(), .most_bytes = cache.most_bytes()};
    VideoDownload::Limits limits;
    limits.all_seconds = options_.seconds;
    limits.least_speed = options_.least_speed;
    limits.speed_seconds = options_.speed_seconds;
    auto fetched = liveness_.guard([](Work& self, const std::string& error) {
        const PlatformScope scope(self.platform_);
        const NSString copy = error.empty() ? self.platform_.video_cache().path_for(self.address_) : NSString();
        if (copy)
            self.prepare(NSURL::fileURLWithPath(copy));
        else
            self.done(error.empty() ? "the cache has lost the video" : error);
    });
    thread_ = std::jthread([&loop = platform_.loop(), of_cache = std::move(of_cache), limits, fetched,
                            address = address_.text(), received = received_](const std::stop_token& stop) mutable {
        VideoCache own(std::move(of_cache));
        VideoDownload download(limits);
        const std::stop_callback cancel(stop, [&download] { download.cancel(); });
        const VideoDownload::Result result =
            download.fetch(own, address, [&received](std::uint64_t bytes, std::uint64_t all) {
                received->bytes = bytes;
                received->all = all;
            });
        loop.post([fetched, error = result.error] { fetched(error); });
    });
}

void Preload::Work::prepare(const NSURL& source)
{
    video_ = platform_.players().prepare(
        source, [this](const std::string& error) { error.empty() ? prepared() : done(error); });
}

/// Reports the progress, and gives up on a video that its player would wait for.
void Preload::Work::look()
{
    if (video_ && !video_->is_good()) { // an ad has taken it over
        platform_.loop().stop_timer(std::exchange(looks_, 0));
        on_done_ = nullptr;
        return;
    }
    if (is_prepared_)
        return prepared();
    const bool streams = video_ && !video_->source().is_file;
    const std::uint64_t bytes = streams ? video_->received_bytes() : received_->bytes.load();
    const std::uint64_t all = streams ? video_->whole_bytes() : received_->all.load();
    const double now = platform_.loop().now();
    if (streams && now - began_ > options_.seconds)
        return done("not ready within " + shortest_text(options_.seconds) + " seconds");
    if (streams && (all == 0 || bytes < all) && speed_.is_undercut(now, bytes))
        return done(speed_.reason());
    if (bytes == reported_ || !options_.on_progress)
        return;
    reported_ = bytes;
    // May destroy this object.
    const auto on_progress = options_.on_progress;
    call_host("PreloadOptions::on_progress", &platform_, [&] { on_progress(bytes, all); });
}

/// The first ad of a program loads libraries and fonts, which takes longer than opening it.
void Preload::Work::prepared()
{
    const PlatformScope scope(platform_);
    is_prepared_ = true;
    if (!platform_.web_engines().warm_up())
        return; // look() tries again
    platform_.text().measure("0", FontSpec{}, {1000, 1000});
    done("");
}

void Preload::Work::done(const std::string& error)
{
    if (looks_ != 0)
        platform_.loop().stop_timer(std::exchange(looks_, 0));
    ready_ = error.empty();
    if (!ready_)
        video_.reset();
    // May destroy this object.
    if (const OnDone on_done = std::exchange(on_done_, nullptr))
        call_host("Preload::OnDone", &platform_, [&] { on_done(error); });
}

Preload::Preload(Desktop& desktop, const QoroVideoAd& ad, OnDone on_done, PreloadOptions options)
    : Preload(*desktop.platform_, ad, std::move(on_done), std::move(options))
{
}

Preload::Preload(DesktopPlatform& platform, const QoroVideoAd& ad, OnDone on_done, PreloadOptions options)
    : work_(std::make_unique<Work>(platform, ad, std::move(on_done), std::move(options)))
{
}

Preload::~Preload() = default;

void Preload::cancel()
{
    work_.reset();
}

bool Preload::is_ready() const
{
    return work_ && work_->is_ready();
}

} // namespace qoro
