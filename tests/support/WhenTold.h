#pragma once

#include "tests/support/AdSession.h"

#include <functional>
#include <string_view>
#include <utility>

namespace qoro
{

/// Queries the controller, or changes the world, in the middle of an operation: runs a function at each event of one
/// kind ("js", "player", "openURL", …), before the session receives the event.
class WhenTold final : private Witness
{
public:
    WhenTold(AdSession& session, std::string_view what, std::function<void()> then)
        : platform_(session.platform()), session_(platform_.witness()), what_(what), then_(std::move(then))
    {
        platform_.set_witness(this);
    }
    WhenTold(const WhenTold&) = delete;
    WhenTold& operator=(const WhenTold&) = delete;
    ~WhenTold() override { platform_.set_witness(session_); }

private:
    void tell(std::string_view what, std::initializer_list<Field> fields) override
    {
        if (what == what_)
            then_();
        session_->tell(what, fields);
    }

    Platform& platform_;
    Witness* session_;
    std::string_view what_;
    std::function<void()> then_;
};

} // namespace qoro
