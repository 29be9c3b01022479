#pragma once

#include "platform/Foundation.h"
#include "platform/Platform.h"

#include <functional>
#include <memory>
#include <optional>
#include <string_view>

namespace qoro
{

class QoroPhoneGapViewController;

/// Calls a page's listeners when the places of the controls over it change, at most ten times a second. Watches only
/// while the page listens. Main thread only.
class ControlWatch : public Object
{
public:
    /// Name of the page's event. Its data has the rectangles as `{"e": {"controls": […]}}`.
    static constexpr std::string_view Event = "controlschange";

    /// @param ad must outlive this object
    /// @param rects where the controls are now (rects_over_page)
    ControlWatch(QoroPhoneGapViewController& ad, Platform& platform, std::function<NSArray()> rects);
    ~ControlWatch() override;
    ControlWatch(const ControlWatch&) = delete;
    ControlWatch& operator=(const ControlWatch&) = delete;

    /// A listener has been added: calls the listeners after the current event, whether or not anything has changed.
    void begin();

private:
    friend class StateReader; // workbench/explore/StateHash.cpp
    void look_later();
    void look();

    QoroPhoneGapViewController& ad_;
    Platform& platform_;
    const std::function<NSArray()> rects_;
    std::unique_ptr<ViewWatch> watch_;
    /// What the listeners know; null when they are due in any case.
    Value sent_;
    /// Time of the last call, in seconds of the main loop; absent before the first.
    std::optional<double> sent_at_;
    bool looks_ = false;
    /// Timer until the next call is permitted; 0 when stopped.
    TimerId timer_ = 0;
};

} // namespace qoro
