#include "platform/MediaPlayer.h"

#include "views/NodeAccess.h"

#include <deque>

namespace qoro
{

namespace
{

/// Allocates one byte per player and retains it for the platform's lifetime, so that an identity is never reused: an
/// observer may outlive its player and must not receive the notifications of a later one at the same address.
struct PlayerIdentities {
    std::deque<char> taken;
};

} // namespace

/// The shared state of the handles: owns the engine and the view, and posts the engine's reports as notifications.
struct MPMoviePlayerController::State final : PlayerListener, std::enable_shared_from_this<State> {
    Platform& platform;
    const void* const identity;
    const NSURL source;
    const std::shared_ptr<ViewNode> video;
    PlayerSettings settings;
    std::unique_ptr<PlayerEngine> engine;
    std::size_t seeks = 0;
    /// The last handle is gone, and destruction is posted to follow the engine's current report.
    bool let_go = false;

    State(Platform& on_platform, const NSURL& of_source)
        : platform(on_platform), identity(&on_platform.shared<PlayerIdentities>().taken.emplace_back()),
          source(of_source), video(std::make_shared<ViewNode>(ViewNode::Kind::Video))
    {
    }

    ~State() override { video->player = nullptr; }

    void load_state_changed() override { post(MPMoviePlayerLoadStateDidChangeNotification); }
    void playback_state_changed() override { post(MPMoviePlayerPlaybackStateDidChangeNotification); }
    void finished(MPMovieFinishReason reason) override
    {
        post(MPMoviePlayerPlaybackDidFinishNotification,
             {{std::string(MPMoviePlayerPlaybackDidFinishReasonUserInfoKey), reason}});
    }

    void first_picture() override { platform.emit(event::FirstPictureShown{}); }

    void post(std::string_view name, const NSDictionary& info = {})
    {
        std::shared_ptr<State> held = weak_from_this().lock();
        if (!held || let_go)
            return;
        platform.dispatch([&] { platform.shared<NSNotificationCenter>().deliver(name, identity, info); });
        if (held.use_count() > 1)
            return;
        // An observer released the last handle. The engine is still inside its report, so it is destroyed in a later
        // event.
        let_go = true;
        video->player = nullptr;
        platform.loop().post([gone = std::move(held)] {});
    }

    template <typename T>
    void set(T PlayerSettings::*member, T value)
    {
        if (settings.*member == value)
            return;
        settings.*member = value;
        engine->apply(settings);
    }
};

MPMoviePlayerViewController MPMoviePlayerViewController::initWithContentURL(const NSURL& address)
{
    Platform& platform = Platform::current();
    platform.emit(event::PlayerCreated{address.absoluteString(), address.is_file()});
    MPMoviePlayerViewController controller;
    auto& state = controller.player_.state_;
    state = std::make_shared<MPMoviePlayerController::State>(platform, address);
    state->engine = platform.players().make_player(address, *state);
    state->video->player = state->engine.get();
    return controller;
}

const void* MPMoviePlayerController::identity() const
{
    return state_ ? state_->identity : nullptr;
}

void MPMoviePlayerController::play() const
{
    if (!state_)
        return;
    state_->platform.emit(event::PlayerStarted{});
    state_->engine->play();
}

void MPMoviePlayerController::pause() const
{
    if (!state_)
        return;
    state_->platform.emit(event::PlayerPaused{});
    state_->engine->pause();
}

MPMoviePlaybackState MPMoviePlayerController::playbackState() const
{
    return state_ ? state_->engine->playback_state() : MPMoviePlaybackStateStopped;
}

MPMovieLoadState MPMoviePlayerController::loadState() const
{
    return state_ ? state_->engine->load_state() : MPMovieLoadStateUnknown;
}

double MPMoviePlayerController::duration() const
{
    return state_ ? state_->engine->duration() : 0;
}

double MPMoviePlayerController::currentPlaybackTime() const
{
    return state_ ? state_->engine->current_time() : 0;
}

void MPMoviePlayerController::setCurrentPlaybackTime(double seconds) const
{
    if (!state_)
        return;
    state_->platform.emit(event::PlayerSought{seconds});
    ++state_->seeks;
    state_->engine->seek(seconds);
}

std::size_t MPMoviePlayerController::seekCount() const
{
    return state_ ? state_->seeks : 0;
}

UIView MPMoviePlayerController::view() const
{
    return state_ ? UIView(state_->video) : UIView();
}

void MPMoviePlayerController::setFullscreen(bool fullscreen) const
{
    if (state_)
        state_->set(&PlayerSettings::fullscreen, fullscreen);
}

void MPMoviePlayerController::setScalingMode(MPMovieScalingMode mode) const
{
    if (!state_)
        return;
    state_->set(&PlayerSettings::scaling_mode, mode);
    assign(state_->video, &ViewNode::scaling_mode, mode);
}

void MPMoviePlayerController::setShouldAutoplay(bool autoplay) const
{
    if (state_)
        state_->set(&PlayerSettings::should_autoplay, autoplay);
}

void MPMoviePlayerController::setRepeatMode(MPMovieRepeatMode mode) const
{
    if (state_)
        state_->set(&PlayerSettings::repeat_mode, mode);
}

void MPMoviePlayerController::setControlStyle(MPMovieControlStyle style) const
{
    if (state_)
        state_->set(&PlayerSettings::control_style, style);
}

void MPMoviePlayerController::setMovieSourceType(MPMovieSourceType type) const
{
    if (state_)
        state_->set(&PlayerSettings::source_type, type);
}

PlayerSettings MPMoviePlayerController::settings() const
{
    return state_ ? state_->settings : PlayerSettings{false,
                                                      MPMovieScalingModeNone,
                                                      false,
                                                      MPMovieControlStyleNone,
                                                      MPMovieRepeatModeNone,
                                                      MPMovieSourceTypeUnknown};
}

NSURL MPMoviePlayerController::contentURL() const
{
    return state_ ? state_->source : NSURL();
}

PlayerEngine* MPMoviePlayerController::engine() const
{
    return state_ ? state_->engine.get() : nullptr;
}

} // namespace qoro
