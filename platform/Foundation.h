#pragma once

#include "platform/Object.h"
#include "platform/Platform.h"
#include "platform/Value.h"

#include <functional>
#include <memory>
#include <string_view>
#include <type_traits>
#include <vector>

namespace qoro
{

class UIButton;
struct QoroAdRequest;

/// A notification as its observers get it.
struct NSNotification {
    std::string_view name;
    /// Who posted it; null when nobody in particular. Compared, never used.
    const void* object = nullptr;
    /// Null when there is none.
    NSDictionary userInfo;
};

/// What an action is called with: nothing, the control that was touched, a notification, or a request's answer.
struct Cause {
    const UIButton* sender = nullptr;
    const NSNotification* notification = nullptr;
    const QoroAdRequest* request = nullptr;
};

/// A target, an operation's name and the operation itself. Equal by target and name. It does not keep its target; a
/// timer or a request that must keep it asks for target().
class Action
{
public:
    using Call = void (*)(Object&, const Cause&);

    Action() = default;
    Action(Object* target, std::string_view name, Call call);

    explicit operator bool() const { return call_ != nullptr; }
    /// Null when the target is gone.
    std::shared_ptr<Object> target() const { return target_.lock(); }
    /// Who the target is, to compare; it may be gone.
    const Object* target_identity() const { return identity_; }
    /// With its colons: "videoReplay:".
    std::string_view name() const { return name_; }
    /// Calls the operation, holding the target to the end; nothing when the target is gone.
    void operator()(const Cause& cause = {}) const;

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

/// An action of a member function that takes nothing, a notification, a request's answer or the touched button:
/// action<&QoroVideoWebViewController::setMute>(this, "setMute").
template <auto member>
Action action(typename detail::MemberOf<decltype(member)>::Target* target, std::string_view name)
{
    return {target, name, &detail::call<member>};
}

/// A timer on the main loop. An empty handle is null; a copy is the same timer. A running timer keeps its target.
class NSTimer
{
public:
    NSTimer() = default;
    NSTimer(std::nullptr_t) {}
    /// @param interval seconds
    static NSTimer scheduledTimerWithTimeInterval(double interval, const Action& action, bool repeats);

    explicit operator bool() const { return state_ != nullptr; }
    /// Whether it may still fire. False for null.
    bool isValid() const;
    void invalidate() const;
    /// Seconds; 0 for null.
    double timeInterval() const;
    bool repeats() const;
    /// When it fires next, in seconds since the session's start; 0 once it is no longer valid.
    double fireDate() const;
    /// The name of the action that a timer of the current platform calls right now; empty outside of any.
    static std::string_view firing();

private:
    struct Running;
    struct State;
    std::shared_ptr<State> state_;
};

/// Notifications are delivered inside the post, in the order in which the observers came. It keeps no observer. Names
/// are kept as they are given: they outlive the registration.
class NSNotificationCenter
{
public:
    explicit NSNotificationCenter(Platform& platform) : platform_(platform) {}
    static NSNotificationCenter& defaultCenter();

    /// @param object only notifications of this poster; null for any poster
    void addObserver(const Action& action, std::string_view name, const void* object = nullptr);
    /// Everything that the observer has registered.
    void removeObserver(const Object* observer);
    /// What the observer has registered under the name, for the poster; for every poster when object is null.
    void removeObserver(const Object* observer, std::string_view name, const void* object);
    /// Posts on the controller's behalf; told to the witness.
    void postNotificationName(std::string_view name, const void* object = nullptr, const NSDictionary& userInfo = {});
    /// Posts on the platform's behalf.
    void deliver(std::string_view name, const void* object = nullptr, const NSDictionary& userInfo = {});
    /// How many registrations the observer has.
    std::size_t count_of(const Object* observer) const;

private:
    struct Registration {
        Action action;
        std::string_view name;
        const void* object;
        std::uint64_t serial;
    };
    Platform& platform_;
    /// By serial, from the oldest on.
    std::vector<Registration> registrations_;
    std::uint64_t next_serial_ = 1;
};

/// What a synchronous fetch is for, so that a trace can tell.
enum class FetchPurpose { BrandIcon, HiddenImage, ButtonImage };

/// Fetches an address while the calling thread waits. Null when it fails or the address is null.
NSData dataWithContentsOfURL(const NSURL& address, FetchPurpose purpose);

/// The same on the global background queue: the work starts as an event of its own, and what arrived is handed back to
/// the main queue. Nothing is handed back, and onMainQueue never called, when the fetch fails.
void dataWithContentsOfURLInBackground(const NSURL& address, FetchPurpose purpose,
                                       std::function<void(const NSData&)> onMainQueue);

/// A line on the console.
void NSLog(const std::string& line);

/// The main bundle's info-dictionary value "CFBundleDisplayName"; null when it has none.
NSString bundleDisplayName();

/// 16 bytes of MD5.
std::string CC_MD5(std::string_view bytes);

// Notifications of the platform.
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

} // namespace qoro
