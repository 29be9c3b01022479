#include "desktop/web/SocketFilter.h"

#include "desktop/glib/AsyncResult.h"
#include "desktop/glib/Owned.h"

#include "desktop/web/WebKitFunctions.h"

#include <array>
#include <cstddef>
#include <set>
#include <string>

namespace qoro
{

namespace
{

// Hosts in WebKit's normalised spelling: every form of an IPv4 address becomes four decimal numbers, and the last four
// bytes of an IPv6 address become two hexadecimal numbers. The filters' regular expressions do not support alternation.

constexpr std::array machine_hosts{
    R"(([^/]*@)?localhost\\.?[:/])",
    R"([^/]*\\.localhost\\.?[:/])",
    R"(([^/]*@)?127\\.[0-9]+\\.[0-9]+\\.[0-9]+[:/])",
    R"(([^/]*@)?0\\.[0-9]+\\.[0-9]+\\.[0-9]+[:/])",
    R"(([^/]*@)?\\[::1?\\])",
    R"(([^/]*@)?\\[::ffff:7f)",
    R"(([^/]*@)?\\[::ffff:0:)",
};

constexpr std::array private_hosts{
    R"(([^/]*@)?10\\.[0-9]+\\.[0-9]+\\.[0-9]+[:/])",
    R"(([^/]*@)?100\\.6[4-9]\\.[0-9]+\\.[0-9]+[:/])",
    R"(([^/]*@)?100\\.[7-9][0-9]\\.[0-9]+\\.[0-9]+[:/])",
    R"(([^/]*@)?100\\.1[01][0-9]\\.[0-9]+\\.[0-9]+[:/])",
    R"(([^/]*@)?100\\.12[0-7]\\.[0-9]+\\.[0-9]+[:/])",
    R"(([^/]*@)?169\\.254\\.[0-9]+\\.[0-9]+[:/])",
    R"(([^/]*@)?172\\.1[6-9]\\.[0-9]+\\.[0-9]+[:/])",
    R"(([^/]*@)?172\\.2[0-9]\\.[0-9]+\\.[0-9]+[:/])",
    R"(([^/]*@)?172\\.3[01]\\.[0-9]+\\.[0-9]+[:/])",
    R"(([^/]*@)?192\\.168\\.[0-9]+\\.[0-9]+[:/])",
    R"(([^/]*@)?198\\.1[89]\\.[0-9]+\\.[0-9]+[:/])",
    R"(([^/]*@)?\\[f[cd])",
    R"(([^/]*@)?\\[fe[89abcdef])",
    R"(([^/]*@)?\\[64:ff9b:)",
    R"(([^/]*@)?\\[2002:)",
    R"(([^/]*@)?\\[::ffff:)",
};

/// Content filter rules that block WebSockets to any of the hosts.
template <std::size_t count>
std::string rules_for(const std::array<const char*, count>& hosts)
{
    std::string rules;
    for (const char* host : hosts) {
        rules += rules.empty() ? "[" : ",";
        rules += R"({"trigger": {"url-filter": "^wss?://)" + std::string(host) +
                 R"(", "resource-type": ["websocket"]}, "action": {"type": "block"}})";
    }
    return rules + "]";
}

} // namespace

struct SocketFilter::State {
    explicit State(const std::string& folder) : store(webkit_user_content_filter_store_new(folder.c_str())) {}
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    static std::shared_ptr<State> make(const std::string& folder, const char* name, const std::string& rules)
    {
        auto state = std::make_shared<State>(folder);
        const Owned<GBytes, g_bytes_unref> source(g_bytes_new(rules.data(), rules.size()));
        webkit_user_content_filter_store_save(
            state->store.get(), name, source.get(), nullptr, async_done,
            async_data([state](GObject*, GAsyncResult* result) { state->compiled(result); }));
        return state;
    }

    void apply(WebKitUserContentManager* content, bool is_filtered)
    {
        const bool changes = is_filtered ? filtered.insert(content).second : filtered.erase(content) > 0;
        if (!changes || !filter)
            return;
        if (is_filtered)
            webkit_user_content_manager_add_filter(content, filter.get());
        else
            webkit_user_content_manager_remove_filter(content, filter.get());
    }

    void compiled(GAsyncResult* result)
    {
        Error error;
        filter.reset(webkit_user_content_filter_store_save_finish(store.get(), result, error.out()));
        if (error) {
            g_warning("pages can open sockets to what they must not reach: %s", error.message());
            return;
        }
        for (WebKitUserContentManager* content : filtered)
            webkit_user_content_manager_add_filter(content, filter.get());
    }

    const ObjectRef<WebKitUserContentFilterStore> store;
    /// Null until it is compiled.
    Owned<WebKitUserContentFilter, webkit_user_content_filter_unref> filter;
    std::set<WebKitUserContentManager*> filtered;
};

SocketFilter::SocketFilter(const std::string& folder)
    : machine_(State::make(folder, "machine", rules_for(machine_hosts))),
      private_networks_(State::make(folder, "private-networks", rules_for(private_hosts)))
{
}

SocketFilter::~SocketFilter()
{
    machine_->filtered.clear();
    private_networks_->filtered.clear();
}

void SocketFilter::apply(WebKitUserContentManager* content, NetworkZone reach)
{
    machine_->apply(content, reach < NetworkZone::Machine);
    private_networks_->apply(content, reach < NetworkZone::Private);
}

void SocketFilter::forget(WebKitUserContentManager* content)
{
    machine_->filtered.erase(content);
    private_networks_->filtered.erase(content);
}

} // namespace qoro
