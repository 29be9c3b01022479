#include "kit/RequestLimit.h"

#include "kit/RefusalLog.h"
#include "platform/Platform.h"

#include <algorithm>
#include <utility>

namespace qoro
{

RequestLimit::~RequestLimit()
{
    if (unreported_ > 0)
        platform_.loop().stop_timer(line_);
}

const char* RequestLimit::refusal(const std::string& address, RequestPurpose purpose)
{
    const bool heartbeat = purpose == RequestPurpose::Heartbeat;
    const char* why = nullptr;
    if (heartbeat && !heartbeats_.take(platform_.loop().now()))
        why = "more than 20 heartbeats a second";
    else if (!heartbeat && ++others_ > MostOthers)
        why = "more than 20000 requests of one ad";
    if (why)
        refused(address, why);
    return why;
}

void RequestLimit::refused(const std::string& address, const char* why)
{
    if (unreported_++ > 0)
        return;
    address_ = RefusalLog::shortened(address);
    why_ = why;
    const double wait = std::max(0.0, next_line_ - platform_.loop().now());
    line_ = platform_.loop().start_timer(wait, false, [this] { report(); });
}

void RequestLimit::report()
{
    next_line_ = platform_.loop().now() + BetweenLines;
    const std::int64_t times = std::exchange(unreported_, 0);
    platform_.emit(event::RequestRefused{address_, why_, times});
}

} // namespace qoro
