#include "platform/Foundation.h"

#include <algorithm>
#include <array>
#include <md5.h>
#include <utility>

namespace qoro
{

// ------------------------------------------------------------------------------------------------------------ Action

Action::Action(Object* target, std::string_view name, Call call) : identity_(target), name_(name), call_(call)
{
    if (target)
        target_ = target->weak_from_this();
}

void Action::operator()(const Cause& cause) const
{
    // The operation may destroy the owner of this action.
    if (const std::shared_ptr<Object> held = target())
        call_with(*held, cause);
}

// ----------------------------------------------------------------------------------------------------------- NSTimer

struct NSTimer::State {
    State(Platform& on_platform, double every, bool again) : platform(on_platform), interval(every), repeats(again) {}

    Platform& platform;
    const double interval;
    const bool repeats;
    bool valid = true;
    TimerId id = 0;
    std::weak_ptr<Running> running;
};

/// The part of a timer that the loop owns. The target is stored here rather than in the shared state, so that it is
/// released together with the loop.
struct NSTimer::Running {
    const std::shared_ptr<State> state;
    const Action action;
    std::shared_ptr<Object> target;

    void fire()
    {
        if (!state->valid)
            return;
        state->platform.dispatch([this] {
            const std::shared_ptr<Object> held = target;
            if (!state->repeats) {
                state->valid = false;
                target.reset();
            }
            if (held)
                action.call_with(*held);
        });
    }
};

/// The work of the main loop.
struct NSTimer::Firing {
    std::shared_ptr<Running> running;

    void operator()() const
    {
        // The action may stop the timer, whereupon the loop destroys this function while it runs.
        const std::shared_ptr<Running> held = running;
        held->fire();
    }
};

NSTimer NSTimer::scheduledTimerWithTimeInterval(double interval, const Action& action, bool repeats)
{
    NSTimer timer;
    timer.state_ = std::make_shared<State>(Platform::current(), interval, repeats);
    auto running = std::make_shared<Running>(Running{timer.state_, action, action.target()});
    timer.state_->running = running;
    timer.state_->id = timer.state_->platform.loop().start_timer(interval, repeats, Firing{std::move(running)});
    return timer;
}

const Action* NSTimer::action_of(const std::function<void()>& work)
{
    const Firing* firing = work.target<Firing>();
    return firing ? &firing->running->action : nullptr;
}

bool NSTimer::isValid() const
{
    return state_ && state_->valid;
}

void NSTimer::invalidate() const
{
    if (!isValid())
        return;
    // Releasing the target may destroy the owner of this handle, so the target is released last.
    const std::shared_ptr<State> state = state_;
    const std::shared_ptr<Running> running = state->running.lock();
    const std::shared_ptr<Object> target = running ? std::move(running->target) : nullptr;
    state->valid = false;
    state->platform.loop().stop_timer(state->id);
}

double NSTimer::timeInterval() const
{
    return state_ ? state_->interval : 0;
}

bool NSTimer::repeats() const
{
    return state_ && state_->repeats;
}

double NSTimer::fireDate() const
{
    return isValid() ? state_->platform.loop().due(state_->id) : 0;
}

// ---------------------------------------------------------------------------------------------- NSNotificationCenter

NSNotificationCenter& NSNotificationCenter::defaultCenter()
{
    return Platform::current().shared<NSNotificationCenter>();
}

void NSNotificationCenter::addObserver(const Action& action, std::string_view name, const void* object)
{
    std::erase_if(registrations_, [](const Registration& each) { return !each.action.target(); });
    registrations_.push_back({action, name, object, next_serial_++});
}

void NSNotificationCenter::removeObserver(const Object* observer)
{
    std::erase_if(registrations_, [&](const Registration& each) { return each.action.target_identity() == observer; });
}

void NSNotificationCenter::removeObserver(const Object* observer, std::string_view name, const void* object)
{
    std::erase_if(registrations_, [&](const Registration& each) {
        return each.action.target_identity() == observer && each.name == name && (!object || each.object == object);
    });
}

void NSNotificationCenter::postNotificationName(std::string_view name, const void* object, const NSDictionary& userInfo)
{
    const Value info(userInfo);
    platform_.emit(event::NotificationPosted{name, &info});
    deliver(name, object, userInfo);
}

void NSNotificationCenter::deliver(std::string_view name, const void* object, const NSDictionary& userInfo)
{
    const NSNotification notification{name, object, userInfo};
    Cause cause;
    cause.notification = &notification;
    // Observers may be added and removed during delivery, so each step searches for the next serial. Observers added
    // during delivery are not called.
    const std::uint64_t end = next_serial_;
    for (std::uint64_t serial = 0; serial < end;) {
        const auto next = std::ranges::lower_bound(registrations_, serial, {}, &Registration::serial);
        if (next == registrations_.end() || next->serial >= end)
            return;
        serial = next->serial + 1;
        if (next->name != name || (next->object && next->object != object))
            continue;
        if (!next->action.target()) {
            registrations_.erase(next);
            continue;
        }
        const Action action = next->action;
        action(cause);
    }
}

std::size_t NSNotificationCenter::count_of(const Object* observer) const
{
    return static_cast<std::size_t>(std::ranges::count_if(
        registrations_, [&](const Registration& each) { return each.action.target_identity() == observer; }));
}

// ---------------------------------------------------------------------------------------------------------- Fetching

namespace
{

void emit_fetch(const Platform& platform, const NSURL& address, FetchPurpose purpose)
{
    platform.emit(event::Fetched{address.absoluteString(), purpose});
}

} // namespace

NSData dataWithContentsOfURL(const NSURL& address, FetchPurpose purpose)
{
    if (!address)
        return {};
    Platform& platform = Platform::current();
    emit_fetch(platform, address, purpose);
    FetchAnswer answer = platform.fetcher().fetch_now(address.absoluteString().text());
    return answer.ok ? NSData(std::move(answer.body)) : NSData();
}

void dataWithContentsOfURLInBackground(const NSURL& address, FetchPurpose purpose,
                                       std::function<void(const NSData&)> onMainQueue)
{
    if (!address)
        return;
    Platform& platform = Platform::current();
    auto hand_back = [&platform, onMainQueue = std::move(onMainQueue)](FetchAnswer answer) {
        if (answer.ok)
            platform.dispatch([&] { onMainQueue(NSData(std::move(answer.body))); });
    };
    platform.loop().post([&platform, address, purpose, hand_back = std::move(hand_back)] {
        platform.dispatch([&] {
            emit_fetch(platform, address, purpose);
            platform.fetcher().fetch(address.absoluteString().text(), FetchKind::Image, hand_back);
        });
    });
}

// ------------------------------------------------------------------------------------------------------- Miscellaneous

void NSLog(const std::string& line)
{
    Platform::current().emit(event::ConsoleLogged{line});
}

NSString bundleDisplayName()
{
    return Platform::current().device().facts().display_name;
}

std::string CC_MD5(std::string_view bytes)
{
    MD5_CTX context;
    MD5Init(&context);
    MD5Update(&context, reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    std::array<std::uint8_t, MD5_DIGEST_LENGTH> digest;
    MD5Final(digest.data(), &context);
    return {digest.begin(), digest.end()};
}

} // namespace qoro
