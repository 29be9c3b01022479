#pragma once

#include "kit/NetworkZone.h"

#include <memory>
#include <string>

typedef struct _WebKitUserContentManager WebKitUserContentManager;

namespace qoro
{

/// Prevents pages from opening WebSockets to this machine and to private networks. WebKit does not report WebSockets to
/// the guard in the page's process, so its content filters are used. They are compiled asynchronously and take effect a
/// moment after construction.
class SocketFilter
{
public:
    /// @param folder where WebKit may store the filters
    explicit SocketFilter(const std::string& folder);
    ~SocketFilter();
    SocketFilter(const SocketFilter&) = delete;
    SocketFilter& operator=(const SocketFilter&) = delete;

    /// Limits the pages of a content manager to a zone.
    void apply(WebKitUserContentManager* content, NetworkZone reach);
    /// Removes a content manager that is about to be destroyed.
    void forget(WebKitUserContentManager* content);

private:
    struct State;

    // A pending compilation may keep these alive for longer.
    const std::shared_ptr<State> machine_;
    const std::shared_ptr<State> private_networks_;
};

} // namespace qoro
