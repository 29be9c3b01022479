#include "simulator/VirtualLoop.h"

#include "platform/Platform.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace qoro
{

namespace
{

constexpr std::int64_t Never = std::numeric_limits<std::int64_t>::max();
/// Seconds; bounds due times so that they cannot overflow.
constexpr double LongestInterval = 1e12;

// A timer's id is a serial number above its slot index: ids order by creation, and lookup needs no search.
constexpr unsigned SlotBits = 24;

std::size_t slot_of(TimerId timer)
{
    return static_cast<std::size_t>(timer & ((TimerId{1} << SlotBits) - 1));
}

} // namespace

std::int64_t to_microseconds(double seconds)
{
    if (std::isnan(seconds))
        return 0;
    const double microseconds = seconds * 1e6;
    if (microseconds >= 9.2e18)
        return std::numeric_limits<std::int64_t>::max();
    if (microseconds <= -9.2e18)
        return std::numeric_limits<std::int64_t>::min();
    return std::llround(microseconds);
}

double VirtualLoop::now() const
{
    return static_cast<double>(now_) / 1e6;
}

TimerId VirtualLoop::start_timer(double interval, bool repeats, std::function<void()> fire)
{
    if (!std::isfinite(interval) || interval >= LongestInterval)
        return start(Never, 0, std::move(fire));
    const std::int64_t rounded = std::max<std::int64_t>(1, to_microseconds(interval));
    return start(now_ + rounded, repeats ? rounded : 0, std::move(fire));
}

void VirtualLoop::stop_timer(TimerId timer)
{
    if (!find(timer))
        return;
    // Destroying the function may stop further timers.
    const std::function<void()> ended = std::move(slots_[slot_of(timer)].fire);
    release(slot_of(timer));
}

double VirtualLoop::due(TimerId timer) const
{
    const Slot* slot = find(timer);
    if (!slot)
        return 0;
    return slot->due == Never ? std::numeric_limits<double>::infinity() : static_cast<double>(slot->due) / 1e6;
}

void VirtualLoop::post(std::function<void()> work)
{
    start(now_, 0, std::move(work));
}

TimerId VirtualLoop::after(std::int64_t microseconds, std::function<void()> work)
{
    const std::int64_t delay = std::clamp<std::int64_t>(microseconds, 0, Never / 2);
    return start(now_ + delay, 0, std::move(work));
}

void VirtualLoop::run_until(std::int64_t microseconds)
{
    while (const TimerId next = take_next(microseconds))
        run(next);
    now_ = std::max(now_, microseconds);
}

TimerId VirtualLoop::take_next(std::int64_t microseconds)
{
    while (true) {
        const Due* const posted = at_once_.empty() ? nullptr : &at_once_[at_once_run_];
        const bool from_heap = !heap_.empty() && (!posted || Later{}(*posted, heap_.front()));
        if (!from_heap && !posted)
            return 0;
        const Due next = from_heap ? heap_.front() : *posted;
        if (next.time > microseconds)
            return 0;
        const bool stopped = !find(next.id);
        if (!from_heap) {
            if (++at_once_run_ == at_once_.size()) {
                at_once_.clear();
                at_once_run_ = 0;
            }
        } else if (!stopped && slots_[slot_of(next.id)].interval > 0) {
            Slot& timer = slots_[slot_of(next.id)];
            timer.due += timer.interval;
            replace_first({timer.due, next.id});
        } else {
            const Due last = heap_.back();
            heap_.pop_back();
            if (!heap_.empty())
                replace_first(last);
        }
        if (stopped)
            continue;
        now_ = next.time;
        return next.id;
    }
}

std::vector<VirtualLoop::Queued> VirtualLoop::queue() const
{
    std::vector<const Slot*> slots;
    for (const Slot& slot : slots_)
        if (slot.id != 0)
            slots.push_back(&slot);
    std::ranges::sort(slots, {}, [](const Slot* slot) { return std::pair(slot->due, slot->id); });
    std::vector<Queued> queued;
    queued.reserve(slots.size());
    for (const Slot* slot : slots)
        queued.push_back({slot->id, slot->due, slot->interval, &slot->fire});
    return queued;
}

std::optional<std::int64_t> VirtualLoop::next_due() const
{
    std::optional<std::int64_t> next;
    for (const Slot& slot : slots_)
        if (slot.id != 0 && slot.due != Never)
            next = std::min(next.value_or(slot.due), slot.due);
    return next;
}

void VirtualLoop::clear()
{
    // Destroying the functions may start new timers.
    while (pending() > 0) {
        heap_.clear();
        at_once_.clear();
        at_once_run_ = 0;
        free_.clear();
        const std::vector<Slot> gone = std::exchange(slots_, {});
    }
}

TimerId VirtualLoop::start(std::int64_t due, std::int64_t interval, std::function<void()> fire)
{
    std::size_t place = slots_.size();
    if (free_.empty()) {
        slots_.emplace_back();
    } else {
        place = free_.back();
        free_.pop_back();
    }
    const TimerId id = (next_serial_++ << SlotBits) | place;
    Slot& slot = slots_[place];
    slot.id = id;
    slot.due = due;
    slot.interval = interval;
    slot.fire = std::move(fire);
    if (due != Never)
        push(due, id);
    return id;
}

const VirtualLoop::Slot* VirtualLoop::find(TimerId timer) const
{
    const std::size_t place = slot_of(timer);
    return timer != 0 && place < slots_.size() && slots_[place].id == timer ? &slots_[place] : nullptr;
}

void VirtualLoop::run(TimerId timer)
{
    const std::size_t place = slot_of(timer);
    std::function<void()> fire = std::move(slots_[place].fire);
    if (slots_[place].interval == 0)
        release(place);
    owner_.dispatch(fire);
    // The slots may have moved, and the timer may have been stopped.
    if (find(timer))
        slots_[place].fire = std::move(fire);
}

void VirtualLoop::push(std::int64_t time, TimerId timer)
{
    if (time == now_) {
        at_once_.push_back({time, timer});
        return;
    }
    heap_.push_back({time, timer});
    std::ranges::push_heap(heap_, Later{});
}

void VirtualLoop::replace_first(const Due& due)
{
    std::size_t hole = 0;
    for (std::size_t child = 1; child < heap_.size(); child = 2 * hole + 1) {
        if (child + 1 < heap_.size() && Later{}(heap_[child], heap_[child + 1]))
            ++child;
        if (!Later{}(due, heap_[child]))
            break;
        heap_[hole] = heap_[child];
        hole = child;
    }
    heap_[hole] = due;
}

void VirtualLoop::release(std::size_t place)
{
    slots_[place].id = 0;
    slots_[place].fire = nullptr;
    free_.push_back(place);
}

} // namespace qoro
