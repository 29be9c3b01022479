#include "workbench/explore/StateReader.h"

#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "formats/Fields.h"

#include <cstdint>
#include <limits>

namespace qoro
{

void StateReader::queue()
{
    const std::int64_t now = platform_.loop().now_microseconds();
    if (ad_) {
        timers_[ad_->layout_due_] = "layoutDue";
        for (const TimerField& field : timer_fields())
            timer_field(field.name, (*ad_).*field.field);
    }
    for (const VirtualLoop::Queued& each : platform_.loop().queue()) {
        // Work that is due now may be a closure without a name: the state is not at rest.
        if (each.due <= now)
            known_ = false;
        if (!work(each))
            continue;
        out_.add("due", each.due == std::numeric_limits<std::int64_t>::max() ? -1 : each.due - now);
        out_.add("interval", each.interval);
    }
}

void StateReader::timer_field(std::string_view name, const NSTimer& timer)
{
    out_.add(name, timer.isValid());
    if (!timer.isValid())
        return;
    out_.add(name, to_microseconds(timer.fireDate()) - platform_.loop().now_microseconds());
    out_.add(name, timer.timeInterval());
    out_.add(name, timer.repeats());
}

bool StateReader::work(const VirtualLoop::Queued& queued)
{
    if (const Action* fires = NSTimer::action_of(*queued.work)) {
        action("timer", *fires);
    } else if (const auto* of_player = queued.work->target<SimulatedPlayer::Due>()) {
        const SimulatedPlayer* player = platform_.players_.find(of_player->serial);
        if (!player)
            return false;
        out_.add("playerEvent", of_player->event);
        out_.add("playerEvent", place(player, players_));
    } else if (const auto* of_page = queued.work->target<SimulatedWebEngine::Due>()) {
        const SimulatedWebEngine* page = platform_.web_engines_.engines_[of_page->serial];
        if (!page || page->load_ != of_page->load)
            return false;
        out_.add("pageEvent", of_page->report);
        out_.add("pageEvent", place(page, pages_));
    } else if (const auto* answer = queued.work->target<SimulatedNet::Due>()) {
        // The kind decides which operation the answer reaches.
        out_.add("answer", std::string_view(answer->address));
        out_.add("answer", answer->kind);
        out_.add("answer", std::string_view(answer->answer.target_type().name()));
    } else if (const auto known = timers_.find(queued.id); known != timers_.end()) {
        out_.add("kitTimer", known->second);
    } else {
        known_ = false;
    }
    return true;
}

} // namespace qoro
