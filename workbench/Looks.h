#pragma once

#include "platform/Events.h"
#include "platform/Platform.h"

#include <functional>

namespace qoro
{

class Simulation;

/// Looks at a session at the end of each moment at which the viewer may see or hear something else. Looking does not
/// change the session.
class Looks final : public EventSink
{
public:
    /// @param next receives every event, unchanged
    /// @param look called between two events
    Looks(Simulation& simulation, EventSink& next, std::function<void()> look);

    /// For changes that are not visible, such as the sound's.
    void receive(const Event& event) override;
    /// Now, as at the end of a session.
    void look() { look_(); }

private:
    void look_later();

    Simulation& simulation_;
    EventSink& next_;
    const std::function<void()> look_;
    bool will_look_ = false;
    ViewWatch watch_;
};

} // namespace qoro
