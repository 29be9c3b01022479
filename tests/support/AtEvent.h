#pragma once

#include "tests/support/AdSession.h"

#include <functional>
#include <string_view>
#include <utility>

namespace qoro
{

/// Queries the controller, or changes the world, in the middle of an operation: runs a function at each event of one
/// kind ("js", "player", "openURL", …), before the session receives the event.
class AtEvent final : private EventSink
{
public:
    AtEvent(AdSession& session, std::string_view what, std::function<void()> then)
        : platform_(session.platform()), session_(platform_.event_sink()), what_(what), then_(std::move(then))
    {
        platform_.set_event_sink(this);
    }
    AtEvent(const AtEvent&) = delete;
    AtEvent& operator=(const AtEvent&) = delete;
    ~AtEvent() override { platform_.set_event_sink(session_); }

private:
    void receive(const Event& event) override
    {
        describe(event, [this](std::string_view what, std::span<const Field>) {
            if (what == what_)
                then_();
        });
        session_->receive(event);
    }

    Platform& platform_;
    EventSink* session_;
    std::string_view what_;
    std::function<void()> then_;
};

} // namespace qoro
