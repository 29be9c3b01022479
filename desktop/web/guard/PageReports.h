#pragma once

#include "kit/LineLimit.h"

#include <webkit/webkit-web-process-extension.h>

#include <cstdint>

namespace qoro
{

/// Reports to the host program what a page writes to its console, its uncaught exceptions and its unhandled rejections.
/// Runs in the page's process and limits the reports there, where a flood costs only the page.
class PageReports
{
public:
    /// The reports of a page; owned by the page and destroyed with it.
    static PageReports& of(WebKitWebPage* page);

    /// Observes a window's script world. To be called before any script of the page runs.
    void observe(JSCContext* context);

private:
    explicit PageReports(WebKitWebPage* page) : page_(page) {}

    /// Counts a report that is about to be made, before it costs anything.
    static gboolean admit(PageReports* reports);
    /// Sends the report that admit() has let pass.
    static void send(int kind, const char* message, const char* file, double line, PageReports* reports);

    WebKitWebPage* const page_;
    // Larger than the kit's own limit, so that the kit also sees and counts what it drops.
    LineLimit lines_{350, 150};
    std::int64_t covered_ = 0;
};

} // namespace qoro
