#pragma once

#include "kit/NetworkZone.h"
#include "platform/Ports.h"

#include <map>
#include <memory>
#include <string>

typedef struct _WebKitUserContentManager WebKitUserContentManager;

namespace qoro
{

class PageProxy;
class SocketFilter;

/// How far inside the pages of one process family reach: as far as the page that reaches least.
class PageReach
{
public:
    /// @param sockets shared with other families
    /// @param proxy null where the system's own proxy resolves names
    PageReach(PageKind kind, std::shared_ptr<SocketFilter> sockets, std::unique_ptr<PageProxy> proxy);
    ~PageReach();
    PageReach(const PageReach&) = delete;
    PageReach& operator=(const PageReach&) = delete;

    /// A view's page comes from an address from now on; empty for none.
    void show(WebKitUserContentManager* content, const std::string& document);
    /// The view goes.
    void forget(WebKitUserContentManager* content);

private:
    void update();

    const PageKind kind_;
    const std::shared_ptr<SocketFilter> sockets_;
    const std::unique_ptr<PageProxy> proxy_;
    std::map<WebKitUserContentManager*, NetworkZone> reaches_;
};

} // namespace qoro
