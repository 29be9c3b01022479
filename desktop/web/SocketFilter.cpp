#include "desktop/web/SocketFilter.h"

#include <webkit/webkit.h>

#include <set>

namespace qoro
{

namespace
{

constexpr const char* filter_name = "sockets";

/// Addresses as WebKit spells them: every form of an IPv4 address has become its four decimal parts.
constexpr const char* rules = R"([
  {"trigger": {"url-filter": "^wss?://([^/]*@)?localhost\\.?[:/]", "resource-type": ["websocket"]}, "action": {"type": "block"}},
  {"trigger": {"url-filter": "^wss?://[^/]*\\.localhost\\.?[:/]", "resource-type": ["websocket"]}, "action": {"type": "block"}},
  {"trigger": {"url-filter": "^wss?://([^/]*@)?127\\.[0-9]+\\.[0-9]+\\.[0-9]+[:/]", "resource-type": ["websocket"]}, "action": {"type": "block"}},
  {"trigger": {"url-filter": "^wss?://([^/]*@)?0\\.[0-9]+\\.[0-9]+\\.[0-9]+[:/]", "resource-type": ["websocket"]}, "action": {"type": "block"}},
  {"trigger": {"url-filter": "^wss?://([^/]*@)?\\[::1?\\]", "resource-type": ["websocket"]}, "action": {"type": "block"}},
  {"trigger": {"url-filter": "^wss?://([^/]*@)?\\[::ffff:7f", "resource-type": ["websocket"]}, "action": {"type": "block"}},
  {"trigger": {"url-filter": "^wss?://([^/]*@)?\\[::ffff:0:", "resource-type": ["websocket"]}, "action": {"type": "block"}}
])";

} // namespace

struct SocketFilter::State {
    explicit State(const std::string& folder) : store(webkit_user_content_filter_store_new(folder.c_str())) {}
    ~State()
    {
        g_clear_pointer(&filter, webkit_user_content_filter_unref);
        g_object_unref(store);
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    static void made(GObject* store, GAsyncResult* result, void* data)
    {
        const std::unique_ptr<std::shared_ptr<State>> state(static_cast<std::shared_ptr<State>*>(data));
        GError* error = nullptr;
        (*state)->filter =
            webkit_user_content_filter_store_save_finish(WEBKIT_USER_CONTENT_FILTER_STORE(store), result, &error);
        if (error) {
            g_warning("pages can open sockets to this machine: %s", error->message);
            g_error_free(error);
            return;
        }
        for (WebKitUserContentManager* content : (*state)->filtered)
            webkit_user_content_manager_add_filter(content, (*state)->filter);
    }

    WebKitUserContentFilterStore* const store;
    /// Null until it is made.
    WebKitUserContentFilter* filter = nullptr;
    std::set<WebKitUserContentManager*> filtered;
};

SocketFilter::SocketFilter(const std::string& folder) : state_(std::make_shared<State>(folder))
{
    GBytes* source = g_bytes_new_static(rules, std::char_traits<char>::length(rules));
    webkit_user_content_filter_store_save(state_->store, filter_name, source, nullptr, State::made,
                                          new std::shared_ptr<State>(state_));
    g_bytes_unref(source);
}

SocketFilter::~SocketFilter()
{
    state_->filtered.clear();
}

void SocketFilter::apply(WebKitUserContentManager* content, bool filtered)
{
    const bool changes = filtered ? state_->filtered.insert(content).second : state_->filtered.erase(content) > 0;
    if (!changes || !state_->filter)
        return;
    if (filtered)
        webkit_user_content_manager_add_filter(content, state_->filter);
    else
        webkit_user_content_manager_remove_filter(content, state_->filter);
}

void SocketFilter::forget(WebKitUserContentManager* content)
{
    state_->filtered.erase(content);
}

} // namespace qoro
