#include "desktop/web/guard/PageChannel.h"

#include "desktop/glib/Owned.h"
#include "desktop/web/GuardMessages.h"
#include "platform/ShortText.h"

#include <array>
#include <memory>

namespace qoro
{

namespace
{

constexpr const char* channel_key = "qoro-channel";
/// Maximum bytes of a reported address or reason.
constexpr std::size_t LongestDetail = 1000;

double now()
{
    return static_cast<double>(g_get_monotonic_time()) * 1e-6;
}

/// The beginning of a text, converted to valid UTF-8.
std::string beginning_of(const std::string& text)
{
    const std::size_t length = whole_characters(text, LongestDetail);
    return take_text(g_utf8_make_valid(text.data(), static_cast<gssize>(length)));
}

} // namespace

/// A pending message, with the page's function that receives the answer.
struct PageChannel::Call {
    explicit Call(JSCValue* function) : answered(new_ref(function)) {}
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    void answer(const char* error, const char* result) const
    {
        const auto context = new_ref(jsc_value_get_context(answered.get()));
        const auto value_of = [&](const char* text) {
            return adopt(text ? jsc_value_new_string(context.get(), text) : jsc_value_new_null(context.get()));
        };
        const auto first = value_of(error);
        const auto second = value_of(result);
        std::array<JSCValue*, 2> texts{first.get(), second.get()};
        const auto nothing = adopt(jsc_value_function_callv(answered.get(), texts.size(), texts.data()));
        jsc_context_clear_exception(context.get()); // ignore exceptions of the page's function
    }

    const ObjectRef<JSCValue> answered;
};

PageChannel& PageChannel::of(WebKitWebPage* page)
{
    auto* channel = static_cast<PageChannel*>(g_object_get_data(G_OBJECT(page), channel_key));
    if (channel)
        return *channel;
    channel = new PageChannel(page);
    g_object_set_data_full(G_OBJECT(page), channel_key, channel,
                           [](void* gone) { delete static_cast<PageChannel*>(gone); });
    return *channel;
}

void PageChannel::give_to(JSCContext* context)
{
    // The function holds a reference to the page, which owns the channel.
    const auto bridge = adopt(jsc_value_new_function(
        context, "qoroBridge",
        G_CALLBACK(+[](JSCValue* text, JSCValue* answered, WebKitWebPage* page) { post(text, answered, &of(page)); }),
        g_object_ref(page_), g_object_unref, G_TYPE_NONE, 2, JSC_TYPE_VALUE, JSC_TYPE_VALUE));
    jsc_context_set_value(context, "qoroBridge", bridge.get());
}

const char* PageChannel::objection(const std::string& text)
{
    if (text.size() > longest_message || !g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr))
        return "it is none of the script library's";
    if (!messages_.take(now()) || !bytes_.take(now(), static_cast<double>(text.size())))
        return "too many";
    return nullptr;
}

void PageChannel::post(JSCValue* text, JSCValue* answered, PageChannel* channel)
{
    if (!jsc_value_is_function(answered))
        return;
    std::string message;
    if (jsc_value_is_string(text))
        message = take_text(jsc_value_to_string(text));
    auto call = std::make_unique<Call>(answered);
    if (const char* objection = channel->objection(message)) {
        channel->refuse("message", objection);
        // Not called directly: a recursion of the page would overflow this thread's stack instead of the script's.
        g_idle_add_full(
            G_PRIORITY_DEFAULT,
            [](void* refused) -> gboolean {
                static_cast<Call*>(refused)->answer("the ad does not take this message", nullptr);
                return G_SOURCE_REMOVE;
            },
            call.release(), [](void* refused) { delete static_cast<Call*>(refused); });
        return;
    }
    const GAsyncReadyCallback came = [](GObject* page, GAsyncResult* result, void* data) {
        const std::unique_ptr<Call> asked(static_cast<Call*>(data));
        const auto answer = adopt(webkit_web_page_send_message_to_view_finish(WEBKIT_WEB_PAGE(page), result, nullptr));
        GVariant* content = answer ? webkit_user_message_get_parameters(answer.get()) : nullptr;
        gboolean done = FALSE;
        const char* words = "the ad has gone";
        if (content && g_variant_is_of_type(content, G_VARIANT_TYPE("(bs)")))
            g_variant_get(content, "(b&s)", &done, &words);
        asked->answer(done ? nullptr : words, done ? words : nullptr);
    };
    webkit_web_page_send_message_to_view(channel->page_,
                                         webkit_user_message_new(guard_message, g_variant_new_string(message.c_str())),
                                         nullptr, came, call.release());
}

void PageChannel::refuse(const char* what, const std::string& detail)
{
    if (refusals_.take(now()))
        webkit_web_page_send_message_to_view(
            page_, webkit_user_message_new(guard_refused, g_variant_new("(ss)", what, beginning_of(detail).c_str())),
            nullptr, nullptr, nullptr);
}

bool PageChannel::may_load_library()
{
    return libraries_.take(now());
}

} // namespace qoro
