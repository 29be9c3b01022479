#pragma once

#include "kit/NetworkZone.h"

#include <memory>
#include <string>

typedef struct _WebKitUserContentManager WebKitUserContentManager;

namespace qoro
{

/// Keeps pages from opening WebSockets to addresses of this machine and of private networks, of which the guard in
/// their process does not hear: WebKit's own filters of content, made when the object is, and in force a moment later.
class SocketFilter
{
public:
    /// @param folder where WebKit may keep the filter
    explicit SocketFilter(const std::string& folder);
    ~SocketFilter();
    SocketFilter(const SocketFilter&) = delete;
    SocketFilter& operator=(const SocketFilter&) = delete;

    /// The pages with this content reach a zone, and nothing further inside.
    void apply(WebKitUserContentManager* content, NetworkZone reach);
    /// The content goes.
    void forget(WebKitUserContentManager* content);

private:
    struct State;

    // Outlived by what WebKit is still making.
    const std::shared_ptr<State> machine_;
    const std::shared_ptr<State> private_networks_;
};

} // namespace qoro
