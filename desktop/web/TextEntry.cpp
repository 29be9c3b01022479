#include "desktop/web/TextEntry.h"

#include "desktop/web/WebKitFunctions.h"

namespace qoro
{

namespace
{

constexpr const char* World = "qoro-keyboard";
constexpr const char* Channel = "textEntry";

constexpr const char* Watch = R"js("use strict";
(() => {
    const withoutKeys = ["button", "checkbox", "color", "file", "image", "reset", "submit"];
    const takesKeys = element =>
        element.isContentEditable || element instanceof HTMLTextAreaElement || element instanceof HTMLSelectElement ||
        (element instanceof HTMLInputElement && !withoutKeys.includes(element.type));
    // A page may move its focus arbitrarily often. Only the latest state is reported, at most once per pause
    // (milliseconds).
    const pause = 50;
    let now = false, reported = null, waits = false;
    const report = () => {
        if (now === reported)
            return;
        reported = now;
        window.webkit.messageHandlers.textEntry.postMessage(reported);
        waits = true;
        setTimeout(() => { waits = false; report(); }, pause);
    };
    const focusChanged = active => {
        now = active;
        if (!waits)
            report();
    };
    addEventListener("focusin", event => focusChanged(takesKeys(event.composedPath()[0])), true);
    addEventListener("focusout", () => focusChanged(false), true);
    if (window === window.top)
        focusChanged(false);
})();
)js";

} // namespace

TextEntry::TextEntry(WebKitUserContentManager* content)
{
    connections_.add(content, "script-message-received::textEntry", received, this);
    webkit_user_content_manager_register_script_message_handler(content, Channel, World);
    const Owned<WebKitUserScript, webkit_user_script_unref> watch(
        webkit_user_script_new_for_world(Watch, WEBKIT_USER_CONTENT_INJECT_ALL_FRAMES,
                                         WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START, World, nullptr, nullptr));
    webkit_user_content_manager_add_script(content, watch.get());
}

void TextEntry::received(WebKitUserContentManager*, JSCValue* value, TextEntry* self)
{
    self->active_ = jsc_value_is_boolean(value) && jsc_value_to_boolean(value);
}

} // namespace qoro
