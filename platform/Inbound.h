#pragma once

#include "platform/Export.h"
#include "platform/Platform.h"
#include "platform/Value.h"

#include <functional>
#include <string_view>
#include <utility>

namespace QORO_EXPORT_TO_DESKTOP qoro
{

/// Learns what reaches a session from outside other than through the callbacks of a port, such as a touch or a turn of
/// the device. For programs that record sessions.
class InboundWatch
{
public:
    virtual ~InboundWatch() = default;
    /// Something reaches the session.
    /// @param kind in one word
    /// @param describe returns its content, which depends on the kind; may ask the ports, and need not be called
    /// @param work delivers it; to be called once, inside the call
    virtual void come_in(std::string_view kind, const std::function<Value()>& describe,
                         const std::function<void()>& work) = 0;
};

/// The watch of a platform; shared by the platform.
struct InboundHook {
    /// Null without a watch.
    InboundWatch* watch = nullptr;
};

/// Delivers something to a session, past the platform's watch if there is one.
/// @param describe returns the content for the watch
template <typename Describe, typename Work>
void come_in(Platform& platform, std::string_view kind, Describe&& describe, Work&& work)
{
    if (InboundWatch* const watch = platform.shared<InboundHook>().watch)
        watch->come_in(kind, std::forward<Describe>(describe), std::forward<Work>(work));
    else
        work();
}

} // namespace qoro
