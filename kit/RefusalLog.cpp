#include "kit/RefusalLog.h"

#include "platform/Platform.h"
#include "platform/ShortText.h"

namespace qoro
{

void RefusalLog::report(Platform& platform, const std::string& kind, const std::string& detail)
{
    if (const auto times = count(platform.loop().now()))
        platform.emit(event::PageRefused{kind, shortened(detail), *times});
}

std::string RefusalLog::shortened(const std::string& detail)
{
    constexpr std::size_t Most = 1000;
    return qoro::shortened(detail, Most, "...");
}

} // namespace qoro
