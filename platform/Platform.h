#pragma once

#include "platform/Events.h"
#include "platform/Export.h"
#include "platform/Ports.h"

#include <functional>
#include <memory>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

namespace QORO_EXPORT qoro
{

class ViewWatch;

/// A platform with its ports: a simulated one, or the machine's own. Bound to the thread that made it current. Only
/// creating an object and looking up a shared one consult the current platform; an object remembers the platform it was
/// created on.
class Platform
{
public:
    /// Creates a platform that is not current on any thread.
    Platform();
    Platform(const Platform&) = delete;
    Platform& operator=(const Platform&) = delete;
    virtual ~Platform();

    /// The current platform of the thread. Aborts the program when the thread has none: that is a programming error.
    static Platform& current();
    /// As current(), but null when the thread has no current platform.
    static Platform* current_or_null();

    /// A port of the platform, which lives as long as the platform.
    /// @{
    virtual MainLoop& loop() = 0;
    virtual PlayerFactory& players() = 0;
    virtual WebEngineFactory& web_engines() = 0;
    virtual OutputVolume& volume() = 0;
    virtual Fetcher& fetcher() = 0;
    virtual TextMeasurer& text() = 0;
    virtual ImageDecoder& images() = 0;
    virtual Device& device() = 0;
    virtual VideoCacheStore& video_cache() = 0;
    virtual Calendar& calendar() = 0;
    virtual Display& display() = 0;
    /// @}
    /// The default implementation returns every text untranslated.
    virtual Translation& translation();

    /// Receives the platform's events; null when no sink is set.
    EventSink* event_sink() const { return event_sink_; }
    /// Sets the event sink; null removes it. A sink must stay alive until it is replaced.
    void set_event_sink(EventSink* sink) { event_sink_ = sink; }
    /// Passes an event to the event sink, if there is one.
    void emit(const Event& event) const
    {
        if (event_sink_)
            event_sink_->receive(event);
    }

    /// The platform's singleton of type T, created on first use; constructed from the platform if T accepts it.
    template <typename T>
    T& shared();
    /// Destroys every shared object, in reverse order of creation. For the destructor of a derived platform, while its
    /// ports still exist.
    void drop_shared();

    /// Runs an event with this platform current. Catches PlatformFault and emits it as an event; other exceptions
    /// propagate.
    template <typename F>
    void dispatch(F&& event);

    /// Something visible has changed: notifies the display and every ViewWatch.
    void views_changed();

    // Notifications from the platform to the controller. Each runs as an event of its own.

    /// The output volume changed, by the program or the viewer.
    void output_volume_changed();
    /// The device was turned, or its orientation forced.
    void device_orientation_changed();
    /// The status bar's orientation changed.
    void status_bar_frame_changed();
    /// The viewer leaves the application: pauses the players, then calls application_did_enter_background().
    virtual void leave_app();
    /// The application is in the background. Observed by the kit only.
    void application_did_enter_background();
    /// The viewer returns to the application.
    void application_will_enter_foreground();
    /// The application is in the foreground and receives touches again.
    void application_did_become_active();
    /// An audio interruption, such as a call, begins or ends.
    void audio_interrupted(AVAudioSessionInterruptionType type);

private:
    friend class ViewWatch;
    void fault(std::string_view operation, std::string_view message);

    EventSink* event_sink_ = nullptr;
    std::vector<ViewWatch*> view_watches_;
    /// In order of creation; destroyed in reverse order. A handful of entries, so a linear search is fastest.
    std::vector<std::pair<const std::type_info*, std::shared_ptr<void>>> shared_;
};

/// Calls back for every visible change while it exists, synchronously inside the running event. An observer that
/// inspects the view tree must defer that until the event has ended.
class ViewWatch
{
public:
    /// Starts the watch. The platform must outlive it.
    ViewWatch(Platform& platform, std::function<void()> changed);
    ~ViewWatch();
    ViewWatch(const ViewWatch&) = delete;
    ViewWatch& operator=(const ViewWatch&) = delete;

private:
    friend class Platform;
    Platform& platform_;
    const std::function<void()> changed_;
};

/// Makes a platform the thread's current one during the scope; restores the previous one at its end.
class PlatformScope
{
public:
    /// Makes the platform current. It must outlive the scope.
    explicit PlatformScope(Platform& platform);
    ~PlatformScope();
    PlatformScope(const PlatformScope&) = delete;
    PlatformScope& operator=(const PlatformScope&) = delete;

private:
    Platform* before_;
};

/// Thrown by an operation that the platform rejects; caught only by Platform::dispatch.
struct PlatformFault {
    /// Name of the rejected operation.
    std::string operation;
    /// Why, one line.
    std::string message;
};

template <typename T>
T& Platform::shared()
{
    const std::type_info& type = typeid(T);
    // Almost always the description of a type is one object. A library loaded at run time may have a second one, which
    // only a comparison of the names shows.
    for (const auto& [of_type, object] : shared_)
        if (of_type == &type)
            return *static_cast<T*>(object.get());
    for (const auto& [of_type, object] : shared_)
        if (*of_type == type)
            return *static_cast<T*>(object.get());
    std::shared_ptr<T> made;
    if constexpr (std::is_constructible_v<T, Platform&>)
        made = std::make_shared<T>(*this);
    else
        made = std::make_shared<T>();
    shared_.emplace_back(&type, made);
    return *made;
}

template <typename F>
void Platform::dispatch(F&& event)
{
    PlatformScope scope(*this);
    try {
        event();
    } catch (const PlatformFault& rejected) {
        fault(rejected.operation, rejected.message);
    }
}

} // namespace qoro
