#include "desktop/DesktopPlatform.h"

#include "views/RootControllers.h"
#include "views/TearDown.h"

#include <algorithm>
#include <malloc.h>
#include <utility>

namespace qoro
{

namespace
{

PageLimits with_dropped_frames(PageLimits limits)
{
    limits.dropped_frames = Pipeline::dropped_frames;
    return limits;
}

} // namespace

DesktopPlatform::DesktopPlatform(const Options& options, Platform* front)
    : front_(front ? *front : *this), last_requests_seconds_(options.last_requests_seconds),
      reach_(options.allow_private_network ? NetworkZone::Private : NetworkZone::Public),
      device_(front_, options.device),
      output_volume_(loop_, options.system_volume ? PulseVolume::Scope::System : PulseVolume::Scope::Program),
      volume_(output_volume_, options.volume_slider),
      web_engines_(front_, with_dropped_frames(options.pages), options.inspect_pages),
      video_cache_(options.video_cache), calendar_(options.calendar), screen_(front_, options.covered)
{
    front_.shared<OpenNetworks>().open = open_zone();
    if (options.volume)
        output_volume_.set_value(*options.volume);
    output_volume_.on_change = [this] { front_.output_volume_changed(); };
    web_engines_.on_hold = [this] { return players_.are_starting(); };
    players_.options.silent = options.silent;
    players_.options.volume = [this] { return output_volume_.player_volume(); };
    players_.options.on_end = [this](const GstPlayer& player) {
        interrupted_.erase(&player);
        return_memory_later();
    };
    players_.options.on_sound_request = [this](const GstPlayer& player, SoundRequest request) {
        sound_requested(player, request);
    };
    device_.on_interface_rotated = [this](UIInterfaceOrientation from) { notify_rotation(front_, from); };
    screen_.on_turned = [this](bool wide) {
        device_.turn(wide ? UIDeviceOrientationLandscapeLeft : UIDeviceOrientationPortrait);
    };
    // The controller's own log line contains neither the page's address nor the reason.
    fetcher_.on_page_failure = [this](const std::string& address, const std::string& reason) {
        front_.emit(event::PageFailed{address, reason});
    };
    players_.options.on_failure = [this](const std::string& reason) { front_.emit(event::PlayerFailed{reason}); };
}

DesktopPlatform::~DesktopPlatform()
{
    // The callbacks retain objects, which look up the current platform when they are destroyed.
    const PlatformScope scope(front_);
    front_.set_event_sink(nullptr);
    output_volume_.on_change = nullptr;
    fetcher_.abandon();
    tear_down(front_);
    fetcher_.finish(last_requests_seconds_);
}

void DesktopPlatform::return_memory_later()
{
    has_more_to_return_ = std::exchange(returns_memory_, true);
    if (has_more_to_return_)
        return;
    // The C library retains freed memory (see Toolkit.cpp) of each thread that an ad used, some 20 MB in all. By then
    // the ad's last threads and pages have ended, too.
    constexpr double settled = 5;
    loop_.start_timer(settled, false, [this] {
        returns_memory_ = false;
        malloc_trim(0);
        if (has_more_to_return_)
            return_memory_later();
    });
}

NSString DesktopPlatform::VideoCopies::path_for(const NSString& address)
{
    const auto named = address ? named_.find(address.text()) : named_.end();
    return named == named_.end() ? cache_.path_for(address) : NSString(named->second);
}

void DesktopPlatform::set_origin_headers(const std::vector<OriginHeaders>& origins)
{
    added_headers_ = std::make_unique<AddedHeaders>(origins);
}

void DesktopPlatform::sound_requested(const GstPlayer& player, SoundRequest request)
{
    const bool was_interrupted = !interrupted_.empty();
    if (request == SoundRequest::Pause)
        interrupted_.insert(&player);
    else
        interrupted_.erase(&player);
    if (interrupted_.empty() == was_interrupted)
        front_.audio_interrupted(was_interrupted ? AVAudioSessionInterruptionTypeEnded
                                                 : AVAudioSessionInterruptionTypeBegan);
}

void DesktopPlatform::show()
{
    const CGSize room = screen_.room();
    if (room != CGSize{})
        device_.fill(room);
    screen_.show();
}

void DesktopPlatform::leave_app()
{
    players_.leave_app();
    loop_.post([this] { front_.application_did_enter_background(); });
}

void DesktopPlatform::return_to_app()
{
    loop_.post([this] { front_.application_will_enter_foreground(); });
    loop_.post([this] { front_.application_did_become_active(); });
    loop_.post([this] { notify_appearance(front_); });
}

void DesktopPlatform::change_volume(float step)
{
    volume_.set_value(std::clamp(volume_.value() + step, 0.0F, 1.0F));
}

} // namespace qoro
