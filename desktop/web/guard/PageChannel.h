#pragma once

#include "kit/MessageBudget.h"

#include <webkit/webkit-web-process-extension.h>

#include <cstddef>
#include <string>

namespace qoro
{

/// The one way from a page to the program outside, within the page's process: what passes is bounded here, where it
/// costs the page alone.
class PageChannel
{
public:
    /// Belongs to its page, and ends with it.
    static PageChannel& of(WebKitWebPage* page);

    /// Gives the page's script its end: a function qoroBridge(text, answered). The text is a message in JSON; answered
    /// is called once with an error's text or null, and with the result as JSON or null.
    void give_to(JSCContext* context);
    /// Tells the program what the page has not got. A flood is cut.
    void refuse(const char* what, const std::string& detail);
    /// Whether the page may load the script library once more.
    bool may_load_library();

private:
    struct Call;

    explicit PageChannel(WebKitWebPage* page) : page_(page) {}

    static void post(JSCValue* text, JSCValue* answered, PageChannel* channel);
    /// @return what is wrong with a message; null when it may pass
    const char* objection(const std::string& text);

    WebKitWebPage* const page_;
    // More than the kit hears: what it refuses it counts itself.
    MessageBudget messages_{350, 150};
    MessageBudget bytes_{256 * 1024, 512 * 1024};
    MessageBudget refusals_{300, 100};
    MessageBudget libraries_{50, 5};
};

} // namespace qoro
