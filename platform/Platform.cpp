#include "platform/Platform.h"

#include "platform/Foundation.h"
#include "platform/Inbound.h"
#include "platform/MediaPlayer.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace qoro
{

namespace
{
thread_local Platform* current_platform = nullptr;

class Untranslated final : public Translation
{
public:
    std::string translate(const char* text) override { return text; }
    std::string translate(const CountedText& text, unsigned long number) override
    {
        return number == 1 ? text.one : text.many;
    }
};
} // namespace

Platform::Platform() = default;
Platform::~Platform() = default;

Platform& Platform::current()
{
    if (!current_platform) {
        std::fputs("qoro: this thread has no current platform\n", stderr);
        std::abort();
    }
    return *current_platform;
}

Platform* Platform::current_or_null()
{
    return current_platform;
}

Translation& Platform::translation()
{
    static Untranslated untranslated;
    return untranslated;
}

void Platform::drop_shared()
{
    const PlatformScope scope(*this);
    while (!shared_.empty()) {
        // Removed before destruction: the destructor may look up shared objects.
        const std::shared_ptr<void> last = std::move(shared_.back().second);
        shared_.pop_back();
    }
}

void Platform::views_changed()
{
    display().needs_display();
    for (const ViewWatch* watch : view_watches_)
        watch->changed_();
}

void Platform::output_volume_changed()
{
    come_in(
        *this, "volume", [this] { return Value(static_cast<double>(volume().value())); },
        [this] { dispatch([this] { shared<NSNotificationCenter>().deliver(SystemVolumeDidChangeNotification); }); });
}

void Platform::device_orientation_changed()
{
    come_in(
        *this, "orientation", [this] { return Value(static_cast<int>(device().orientation())); },
        [this] {
            dispatch([this] { shared<NSNotificationCenter>().deliver(UIDeviceOrientationDidChangeNotification); });
        });
}

void Platform::status_bar_frame_changed()
{
    come_in(
        *this, "statusBar", [this] { return Value(static_cast<int>(device().status_bar_orientation())); },
        [this] {
            dispatch(
                [this] { shared<NSNotificationCenter>().deliver(UIApplicationDidChangeStatusBarFrameNotification); });
        });
}

void Platform::leave_app()
{
    players().leave_app();
    application_did_enter_background();
}

void Platform::application_did_enter_background()
{
    come_in(
        *this, "background", [] { return Value(); },
        [this] {
            dispatch([this] { shared<NSNotificationCenter>().deliver(UIApplicationDidEnterBackgroundNotification); });
        });
}

void Platform::application_will_enter_foreground()
{
    come_in(
        *this, "foreground", [] { return Value(); },
        [this] {
            dispatch([this] { shared<NSNotificationCenter>().deliver(UIApplicationWillEnterForegroundNotification); });
        });
}

void Platform::application_did_become_active()
{
    come_in(
        *this, "active", [] { return Value(); },
        [this] {
            dispatch([this] { shared<NSNotificationCenter>().deliver(UIApplicationDidBecomeActiveNotification); });
        });
}

void Platform::audio_interrupted(AVAudioSessionInterruptionType type)
{
    come_in(
        *this, "interrupted", [type] { return Value(static_cast<int>(type)); },
        [this, type] {
            dispatch([this, type] {
                shared<NSNotificationCenter>().deliver(AVAudioSessionInterruptionNotification,
                                                       AVAudioSession::sharedInstance(),
                                                       {{std::string(AVAudioSessionInterruptionTypeKey), type}});
            });
        });
}

void Platform::fault(std::string_view operation, std::string_view message)
{
    emit(event::Faulted{operation, message});
}

ViewWatch::ViewWatch(Platform& platform, std::function<void()> changed)
    : platform_(platform), changed_(std::move(changed))
{
    platform_.view_watches_.push_back(this);
}

ViewWatch::~ViewWatch()
{
    std::erase(platform_.view_watches_, this);
}

PlatformScope::PlatformScope(Platform& platform) : before_(current_platform)
{
    current_platform = &platform;
}

PlatformScope::~PlatformScope()
{
    current_platform = before_;
}

} // namespace qoro
