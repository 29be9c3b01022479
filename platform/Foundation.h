#pragma once

#include "platform/Export.h"
#include "platform/Object.h"
#include "platform/Platform.h"
#include "platform/Value.h"

#include <functional>
#include <memory>
#include <string_view>
#include <type_traits>
#include <vector>

namespace QORO_EXPORT qoro
{

class UIButton;
struct QoroAdRequest;

/// A notification as passed to its observers.
struct NSNotification {
    /// Name of the notification, such as UIDeviceOrientationDidChangeNotification.
    std::string_view name;
    /// Identity of the poster; null for an anonymous one. Compared, never dereferenced.
    const void* object = nullptr;
    /// Null when there is none.
    NSDictionary userInfo;
};

/// The argument of an action: nothing, the touched control, a notification or the result of a request. Unused members
/// are null. The objects are valid during the call of the action only.
struct Cause {
    const UIButton* sender = nullptr;             ///< The touched control.
    const NSNotification* notification = nullptr; ///< The notification that was posted.
    const QoroAdRequest* request = nullptr;       ///< The request that has ended.
};

/// A target, the name of an operation and the operation. Compared by target and name. Holds its target weakly; a timer
/// or a request that must retain it calls target().
class Action
{
public:
    /// The operation, called with its target.
    using Call = void (*)(Object&, const Cause&);

    /// A null action.
    Action() = default;
    /// An action of a target; action<>() creates it from a member function.
    /// @param target owned by a shared pointer; null makes an action without effect
    /// @param name stored by reference; must have static storage duration
    /// @param call the operation; null for a null action
    Action(Object* target, std::string_view name, Call call);

    /// False for a null action; true even when the target no longer exists.
    explicit operator bool() const { return call_ != nullptr; }
    /// Null when the target no longer exists.
    std::shared_ptr<Object> target() const { return target_.lock(); }
    /// Identity of the target, for comparison only: it may no longer exist.
    const Object* target_identity() const { return identity_; }
    /// The name with its colons, such as "videoReplay:".
    std::string_view name() const { return name_; }
    /// Calls the operation and retains the target until it returns. No effect when the target no longer exists.
    void operator()(const Cause& cause = {}) const;
    /// Calls the operation with a target that the caller retains until the call returns. No effect for a null action.
    void call_with(Object& target, const Cause& cause = {}) const
    {
        if (call_)
            call_(target, cause);
    }

    /// Whether target and name are equal.
    friend bool operator==(const Action& a, const Action& b)
    {
        return a.identity_ == b.identity_ && a.name_ == b.name_;
    }

private:
    std::weak_ptr<Object> target_;
    const Object* identity_ = nullptr;
    std::string_view name_;
    Call call_ = nullptr;
};

/// @cond
namespace detail
{
template <typename Member>
struct MemberOf;
template <typename Class, typename Result>
struct MemberOf<Result (Class::*)()> {
    using Target = Class;
    using Argument = void;
};
template <typename Class, typename Result, typename A>
struct MemberOf<Result (Class::*)(A)> {
    using Target = Class;
    using Argument = std::remove_cvref_t<A>;
};

template <auto member>
void call(Object& object, const Cause& cause)
{
    using Of = MemberOf<decltype(member)>;
    auto& target = static_cast<typename Of::Target&>(object);
    if constexpr (std::is_void_v<typename Of::Argument>)
        (target.*member)();
    else if constexpr (std::is_same_v<typename Of::Argument, NSNotification>)
        (target.*member)(*cause.notification);
    else if constexpr (std::is_same_v<typename Of::Argument, QoroAdRequest>)
        (target.*member)(*cause.request);
    else
        (target.*member)(*cause.sender);
}
} // namespace detail
/// @endcond

/// Creates an action from a member function that takes nothing, a notification, a request's result or the touched
/// button: action<&QoroVideoWebViewController::setMute>(this, "setMute").
template <auto member>
Action action(typename detail::MemberOf<decltype(member)>::Target* target, std::string_view name)
{
    return {target, name, &detail::call<member>};
}

/// A timer on the main loop. An empty handle is null; copies refer to the same timer. A valid timer retains its target.
class NSTimer
{
public:
    /// A null timer.
    /// @{
    NSTimer() = default;
    NSTimer(std::nullptr_t) {}
    /// @}
    /// Starts a timer on the current platform's loop.
    /// @param interval seconds
    /// @param action called on every firing, as an event of its own
    /// @param repeats whether it fires again and again, rather than once
    static NSTimer scheduledTimerWithTimeInterval(double interval, const Action& action, bool repeats);

    /// False for null; true for a timer that has ended.
    explicit operator bool() const { return state_ != nullptr; }
    /// Whether it may still fire; false for null.
    bool isValid() const;
    /// Stops the timer and releases its target. No effect on a null or stopped timer.
    void invalidate() const;
    /// Seconds; 0 for null.
    double timeInterval() const;
    /// Whether it fires again and again; false for null.
    bool repeats() const;
    /// Next firing, in seconds since the session started; 0 for a timer that is not valid.
    double fireDate() const;
    /// The action that work of the main loop fires; null for work that is not a timer's. For programs that compare
    /// states.
    static const Action* action_of(const std::function<void()>& work);

private:
    struct Running;
    struct State;
    struct Firing;
    std::shared_ptr<State> state_;
};

/// Delivers notifications synchronously inside the post, in registration order. Holds observers weakly. Names are
/// stored by reference and must outlive the registration.
class NSNotificationCenter
{
public:
    /// Called by Platform::shared; use defaultCenter().
    explicit NSNotificationCenter(Platform& platform) : platform_(platform) {}
    /// The current platform's notification centre.
    static NSNotificationCenter& defaultCenter();

    /// Registers an observer.
    /// @param action its target is the observer
    /// @param name of the notifications to observe
    /// @param object restricts it to notifications of this poster; null for any poster
    void addObserver(const Action& action, std::string_view name, const void* object = nullptr);
    /// Removes all registrations of the observer.
    void removeObserver(const Object* observer);
    /// Removes the observer's registrations of a name for one poster; for every poster when object is null.
    void removeObserver(const Object* observer, std::string_view name, const void* object);
    /// Posts a notification of the controller, and emits it as an event.
    void postNotificationName(std::string_view name, const void* object = nullptr, const NSDictionary& userInfo = {});
    /// Posts a notification of the platform; emits no event.
    void deliver(std::string_view name, const void* object = nullptr, const NSDictionary& userInfo = {});
    /// Number of the observer's registrations.
    std::size_t count_of(const Object* observer) const;

private:
    friend class StateReader; // workbench/explore/StateHash.cpp
    struct Registration {
        Action action;
        std::string_view name;
        const void* object;
        std::uint64_t serial;
    };
    Platform& platform_;
    /// In ascending order of serial.
    std::vector<Registration> registrations_;
    std::uint64_t next_serial_ = 1;
};

/// Fetches an address synchronously. Null when the fetch fails or the address is null.
NSData dataWithContentsOfURL(const NSURL& address, FetchPurpose purpose);

/// Fetches an address in the background: the fetch starts as an event of its own and delivers the data on the main
/// queue. onMainQueue is not called when the fetch fails or the address is null.
void dataWithContentsOfURLInBackground(const NSURL& address, FetchPurpose purpose,
                                       std::function<void(const NSData&)> onMainQueue);

/// Writes a line to the console (a trace event).
void NSLog(const std::string& line);

/// The main bundle's info-dictionary value "CFBundleDisplayName"; null when it has none.
NSString bundleDisplayName();

/// The MD5 digest: 16 raw bytes.
std::string CC_MD5(std::string_view bytes);

/// Name of a notification of the platform, or of a key of its user info.
/// @{
inline constexpr std::string_view UIApplicationDidEnterBackgroundNotification =
    "UIApplicationDidEnterBackgroundNotification";
inline constexpr std::string_view UIApplicationDidBecomeActiveNotification = "UIApplicationDidBecomeActiveNotification";
inline constexpr std::string_view UIApplicationWillEnterForegroundNotification =
    "UIApplicationWillEnterForegroundNotification";
inline constexpr std::string_view UIApplicationDidChangeStatusBarFrameNotification =
    "UIApplicationDidChangeStatusBarFrameNotification";
inline constexpr std::string_view UIDeviceOrientationDidChangeNotification = "UIDeviceOrientationDidChangeNotification";
inline constexpr std::string_view SystemVolumeDidChangeNotification =
    "AVSystemController_SystemVolumeDidChangeNotification";
inline constexpr std::string_view MPMoviePlayerPlaybackDidFinishNotification =
    "MPMoviePlayerPlaybackDidFinishNotification";
inline constexpr std::string_view MPMoviePlayerLoadStateDidChangeNotification =
    "MPMoviePlayerLoadStateDidChangeNotification";
inline constexpr std::string_view MPMoviePlayerPlaybackStateDidChangeNotification =
    "MPMoviePlayerPlaybackStateDidChangeNotification";
inline constexpr std::string_view MPMoviePlayerDidExitFullscreenNotification =
    "MPMoviePlayerDidExitFullscreenNotification";
inline constexpr std::string_view MPMoviePlayerPlaybackDidFinishReasonUserInfoKey =
    "MPMoviePlayerPlaybackDidFinishReasonUserInfoKey";
inline constexpr std::string_view AVAudioSessionInterruptionNotification = "AVAudioSessionInterruptionNotification";
inline constexpr std::string_view AVAudioSessionInterruptionTypeKey = "AVAudioSessionInterruptionTypeKey";
/// @}

} // namespace qoro
