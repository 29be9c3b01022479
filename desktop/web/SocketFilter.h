#pragma once

#include <memory>
#include <string>

typedef struct _WebKitUserContentManager WebKitUserContentManager;

namespace qoro
{

/// Keeps pages from opening WebSockets to this machine, which no other guard sees: WebKit's own filter of content, made
/// when the object is, and in force a moment later.
class SocketFilter
{
public:
    /// @param folder where WebKit may keep the filter
    explicit SocketFilter(const std::string& folder);
    ~SocketFilter();
    SocketFilter(const SocketFilter&) = delete;
    SocketFilter& operator=(const SocketFilter&) = delete;

    /// Whether the pages with this content are filtered.
    void apply(WebKitUserContentManager* content, bool filtered);
    /// The content goes.
    void forget(WebKitUserContentManager* content);

private:
    struct State;
    /// Outlived by what WebKit is still making.
    const std::shared_ptr<State> state_;
};

} // namespace qoro
