#pragma once

#include "platform/Ports.h"

#include <functional>
#include <memory>
#include <type_traits>
#include <typeindex>
#include <utility>
#include <vector>

namespace qoro
{

class ViewWatch;

/// One platform with its ports: a simulated one, or the machine's own. It belongs to the thread that made it current.
/// Only making an object and asking for a shared one consult the current platform; an object keeps the one that it
/// was made on.
class Platform
{
public:
    Platform();
    Platform(const Platform&) = delete;
    Platform& operator=(const Platform&) = delete;
    virtual ~Platform();

    /// The thread's platform. Asking without one is a programming error and ends the program.
    static Platform& current();
    /// Null when the thread has none.
    static Platform* current_or_null();

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
    /// A platform without one shows every text as it is written.
    virtual Translation& translation();

    /// Null when nobody listens.
    Witness* witness() const { return witness_; }
    void set_witness(Witness* witness) { witness_ = witness; }
    /// Tells the witness, if there is one.
    void tell(std::string_view what, std::initializer_list<Field> fields = {})
    {
        if (witness_)
            witness_->tell(what, fields);
    }

    /// The platform's one object of a type, made when it is first asked for; it is given the platform when it wants it.
    template <typename T>
    T& shared();
    /// Drops every shared object, the last one made first; for the platform's own destructor, while its ports still
    /// stand.
    void drop_shared();

    /// Runs an event: what the platform rejects in it (PlatformFault) is told to the witness, and the session goes on.
    template <typename F>
    void dispatch(F&& event);

    /// Something that can be seen has changed: the display is told, and whoever watches (ViewWatch).
    void views_changed();

    // What a platform reports to the controller's side, each inside an event of its own.

    /// The output volume changed, by whomever.
    void output_volume_changed();
    /// The device was turned, or its orientation forced.
    void device_orientation_changed();
    /// The status bar's orientation changed.
    void status_bar_frame_changed();
    /// Heard by the kit alone.
    void application_did_enter_background();
    void application_will_enter_foreground();
    void application_did_become_active();
    /// @param type AVAudioSessionInterruptionType: 1 began, 0 ended
    void audio_interrupted(int type);

private:
    friend class ViewWatch;
    void fault(std::string_view operation, std::string_view message);

    Witness* witness_ = nullptr;
    std::vector<ViewWatch*> view_watches_;
    /// In the order of their making. A handful: a search by hand is the quickest, and their end has an order.
    std::vector<std::pair<std::type_index, std::shared_ptr<void>>> shared_;
};

/// Calls back, inside whatever is running, for every change of what can be seen, as long as it lives. Who looks at the
/// view tree looks later, when the event that changes it has ended.
class ViewWatch
{
public:
    ViewWatch(Platform& platform, std::function<void()> changed);
    ~ViewWatch();
    ViewWatch(const ViewWatch&) = delete;
    ViewWatch& operator=(const ViewWatch&) = delete;

private:
    friend class Platform;
    Platform& platform_;
    const std::function<void()> changed_;
};

/// Makes a platform the thread's current one for as long as the scope lives.
class PlatformScope
{
public:
    explicit PlatformScope(Platform& platform);
    ~PlatformScope();
    PlatformScope(const PlatformScope&) = delete;
    PlatformScope& operator=(const PlatformScope&) = delete;

private:
    Platform* before_;
};

/// Thrown by an operation that the platform rejects; caught by the dispatcher alone.
struct PlatformFault {
    /// The platform's operation, by its name.
    std::string operation;
    std::string message;
};

template <typename T>
T& Platform::shared()
{
    const std::type_index type(typeid(T));
    for (const auto& [of_type, object] : shared_)
        if (of_type == type)
            return *static_cast<T*>(object.get());
    std::shared_ptr<T> made;
    if constexpr (std::is_constructible_v<T, Platform&>)
        made = std::make_shared<T>(*this);
    else
        made = std::make_shared<T>();
    shared_.emplace_back(type, made);
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
