#pragma once

#include "kit/MessageBudget.h"

#include <webkit/webkit-web-process-extension.h>

#include <cstddef>
#include <string>

namespace qoro
{

/// The only channel from a page to the host program. It runs in the page's process and limits the traffic there, where
/// a flood costs only the page.
class PageChannel
{
public:
    /// The channel of a page; owned by the page and destroyed with it.
    static PageChannel& of(WebKitWebPage* page);

    /// Defines the function qoroBridge(text, answered) for the page's script. `text` is a message in JSON. `answered`
    /// is called once, with an error text or null, and with the result as JSON or null.
    void give_to(JSCContext* context);
    /// Reports to the host program that something was refused to the page. Excess reports are dropped.
    void refuse(const char* what, const std::string& detail);
    /// Whether the page may load the script library once more; limits the number of loads.
    bool may_load_library();

private:
    struct Call;

    explicit PageChannel(WebKitWebPage* page) : page_(page) {}

    static void post(JSCValue* text, JSCValue* answered, PageChannel* channel);
    /// @return why a message is rejected; null if it is accepted
    const char* objection(const std::string& text);

    WebKitWebPage* const page_;
    // At once, and per second. Larger than the kit's own budgets, so that the kit also sees and counts what it refuses.
    MessageBudget messages_{350, 150};
    MessageBudget bytes_{256 * 1024, 512 * 1024};
    MessageBudget refusals_{300, 100};
    MessageBudget libraries_{50, 5};
};

} // namespace qoro
