#include "desktop/web/PageBridge.h"

#include "desktop/web/ValueJson.h"

#include <webkit/webkit.h>

#include <cstring>
#include <optional>

namespace qoro
{

namespace
{

/// The script library's question for the events that come next.
constexpr const char* NextEvents = "nextEvents";
constexpr std::size_t LongestMessage = 64 * 1024;
/// Calls that are kept for a page whose script does not ask for them.
constexpr std::size_t MostPending = 4096;
constexpr std::size_t MostPendingBytes = 1'000'000;

/// The message of a page; null when it is none.
std::optional<ScriptMessage> parse_message(JSCValue* value)
{
    char* json = jsc_value_to_json(value, 0);
    if (!json)
        return std::nullopt;
    std::optional<Value> content;
    if (std::strlen(json) <= LongestMessage)
        content = value_of_json(json);
    g_free(json);
    if (!content || !content->is_dictionary())
        return std::nullopt;
    const NSDictionary message = content->dictionary();
    const NSString command = message["command"].string();
    const NSArray arguments = message["args"].array();
    if (!command || !arguments)
        return std::nullopt;
    return ScriptMessage{command.text(), arguments};
}

/// Told without a look at the rest: it is asked after every event.
bool asks_for_events(JSCValue* value)
{
    if (!jsc_value_is_object(value))
        return false;
    JSCValue* command = jsc_value_object_get_property(value, "command");
    char* name = jsc_value_is_string(command) ? jsc_value_to_string(command) : nullptr;
    const bool asks = g_strcmp0(name, NextEvents) == 0;
    g_free(name);
    g_object_unref(command);
    return asks;
}

} // namespace

PageBridge::PageBridge(Platform& platform, WebListener& listener)
    : platform_(platform), listener_(listener), self_(std::make_shared<PageBridge*>(this))
{
}

PageBridge::~PageBridge()
{
    *self_ = nullptr;
    dismiss_script();
}

void PageBridge::answer(JSCValue* value, WebKitScriptMessageReply* reply)
{
    if (asks_for_events(value)) {
        wait_for_events(value, reply);
        return;
    }
    const std::optional<ScriptMessage> message = parse_message(value);
    if (!message) {
        webkit_script_message_reply_return_error_message(reply, "not a message of the script library");
        platform_.dispatch([&] { listener_.refused("message", "it is none of the script library's"); });
        return;
    }
    ScriptAnswer answer{"the command could not be carried out", nullptr}; // what stays when the platform rejects it
    platform_.dispatch([&] { answer = listener_.message(*message); });
    if (answer.error) {
        webkit_script_message_reply_return_error_message(reply, answer.error.text().c_str());
        return;
    }
    JSCValue* result = jsc_value_new_from_json(jsc_value_get_context(value), json_of(answer.value).c_str());
    webkit_script_message_reply_return_value(reply, result);
    g_object_unref(result);
}

void PageBridge::call(const NSArray& callbacks, const NSDictionary& data)
{
    if (callbacks.count() == 0 || pending_.size() == MostPending || pending_bytes_ > MostPendingBytes)
        return;
    if (pending_.empty())
        platform_.loop().post([self = self_] {
            if (PageBridge* bridge = *self)
                bridge->deliver();
        });
    pending_.push_back("[" + json_of(callbacks) + "," + json_of(data) + "]");
    pending_bytes_ += pending_.back().size();
}

/// The library asks, and is answered when there is something: so the page gets no function through which events come.
void PageBridge::wait_for_events(JSCValue* message, WebKitScriptMessageReply* reply)
{
    if (waiting_)
        dismiss_script();
    waiting_ = webkit_script_message_reply_ref(reply);
    waiting_in_ = JSC_CONTEXT(g_object_ref(jsc_value_get_context(message)));
    deliver();
}

void PageBridge::deliver()
{
    if (pending_.empty() || !waiting_)
        return;
    std::string events = "[";
    for (const std::string& call : pending_)
        events += (events.size() > 1 ? "," : "") + call;
    events += "]";
    pending_.clear();
    pending_bytes_ = 0;
    // As text, because WebKit sorts the names of what it hands over by itself.
    JSCValue* answer = jsc_value_new_string(waiting_in_, events.c_str());
    webkit_script_message_reply_return_value(waiting_, answer);
    g_object_unref(answer);
    g_clear_pointer(&waiting_, webkit_script_message_reply_unref);
    g_clear_object(&waiting_in_);
}

/// Nothing comes any more for the script that waits.
void PageBridge::dismiss_script()
{
    if (!waiting_)
        return;
    webkit_script_message_reply_return_error_message(waiting_, "no more events");
    g_clear_pointer(&waiting_, webkit_script_message_reply_unref);
    g_clear_object(&waiting_in_);
}

void PageBridge::leave_page()
{
    pending_.clear();
    pending_bytes_ = 0;
    dismiss_script();
}

} // namespace qoro
