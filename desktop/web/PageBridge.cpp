#include "desktop/web/PageBridge.h"

#include "desktop/web/GuardMessages.h"
#include "desktop/web/ValueJson.h"

#include "desktop/web/WebKitFunctions.h"

#include <optional>
#include <string_view>

namespace qoro
{

namespace
{

/// The script library's request for the next events.
constexpr const char* NextEvents = "nextEvents";
/// Limits of the calls queued for a page whose script does not request them.
constexpr std::size_t MostPending = 4096;
constexpr std::size_t MostPendingBytes = 1'000'000;

/// Parses a message of a page; absent if it is invalid.
std::optional<ScriptMessage> parse_message(std::string_view json)
{
    if (json.size() > longest_message)
        return std::nullopt;
    const std::optional<Value> content = value_of_json(json);
    if (!content || !content->is_dictionary())
        return std::nullopt;
    const NSDictionary message = content->dictionary();
    const NSString command = message["command"].string();
    const NSArray arguments = message["args"].array();
    if (!command || !arguments)
        return std::nullopt;
    return ScriptMessage{command.text(), arguments};
}

void reply(WebKitUserMessage* message, bool done, const std::string& words)
{
    const std::string valid = take_text(g_utf8_make_valid(words.data(), static_cast<gssize>(words.size())));
    webkit_user_message_send_reply(
        message, webkit_user_message_new(guard_answer, g_variant_new("(bs)", done ? TRUE : FALSE, valid.c_str())));
}

} // namespace

PageBridge::PageBridge(Platform& platform, WebListener& listener) : platform_(platform), listener_(listener)
{
}

PageBridge::~PageBridge()
{
    dismiss_script();
}

void PageBridge::answer(WebKitUserMessage* message)
{
    const std::optional<ScriptMessage> content =
        parse_message(g_variant_get_string(webkit_user_message_get_parameters(message), nullptr));
    if (!content) {
        reply(message, false, "not a message of the script library");
        platform_.dispatch([&] { listener_.refused("message", "it is none of the script library's"); });
        return;
    }
    if (content->command == NextEvents) {
        wait_for_events(message);
        return;
    }
    ScriptAnswer answer{"the command could not be carried out", nullptr}; // used if the platform rejects the event
    platform_.dispatch([&] { answer = listener_.message(*content); });
    if (answer.error)
        reply(message, false, answer.error.text());
    else
        reply(message, true, json_of(answer.value));
}

void PageBridge::call(const NSArray& callbacks, const NSDictionary& data)
{
    if (callbacks.count() == 0 || pending_.size() == MostPending || pending_bytes_ > MostPendingBytes)
        return;
    if (pending_.empty())
        platform_.loop().post(liveness_.guard([](PageBridge& self) { self.deliver(); }));
    pending_.push_back("[" + json_of(callbacks) + "," + json_of(data) + "]");
    pending_bytes_ += pending_.back().size();
}

/// The library requests events and the reply is delayed until there are some, so that no function for delivering events
/// is exposed to the page.
void PageBridge::wait_for_events(WebKitUserMessage* question)
{
    dismiss_script();
    waiting_ = new_ref(question);
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
    reply(waiting_.get(), true, events);
    waiting_.reset();
}

/// Ends the script's pending request; it receives no more events.
void PageBridge::dismiss_script()
{
    if (!waiting_)
        return;
    reply(waiting_.get(), false, "no more events");
    waiting_.reset();
}

void PageBridge::leave_page()
{
    pending_.clear();
    pending_bytes_ = 0;
    dismiss_script();
}

} // namespace qoro
