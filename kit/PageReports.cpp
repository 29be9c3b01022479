#include "kit/PageReports.h"

#include "kit/RefusalLog.h"
#include "platform/Platform.h"

#include <string_view>

namespace qoro
{

namespace
{

/// The kind's name on a trace line, and whether the line is one of the console.
struct Line {
    std::string_view name;
    bool console;
};

Line line_of(PageReport::Kind kind)
{
    using Kind = PageReport::Kind;
    switch (kind) {
    case Kind::Debug:
        return {"debug", true};
    case Kind::Log:
        return {"log", true};
    case Kind::Info:
        return {"info", true};
    case Kind::Warning:
        return {"warn", true};
    case Kind::Error:
        return {"error", true};
    case Kind::Exception:
        return {"exception", false};
    case Kind::Rejection:
        return {"rejection", false};
    case Kind::Resource:
        break;
    }
    return {"resource", false};
}

} // namespace

void emit_page_report(Platform& platform, const PageReport& report, std::int64_t times)
{
    const Line line = line_of(report.kind);
    const std::string message = RefusalLog::shortened(report.message);
    const std::string address = RefusalLog::shortened(report.file);
    const EventText file = report.file.empty() ? EventText() : EventText(address);
    if (line.console)
        platform.emit(event::PageConsole{line.name, message, file, report.line, times});
    else
        platform.emit(event::PageError{line.name, message, file, report.line, report.status, times});
}

} // namespace qoro
