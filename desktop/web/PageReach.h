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

/// Network reach of the pages of one process family: all of them are limited to the reach of the most restricted page.
class PageReach
{
public:
    /// @param sockets shared with other families
    /// @param proxy null if the system's own proxy resolves names
    PageReach(PageKind kind, std::shared_ptr<SocketFilter> sockets, std::unique_ptr<PageProxy> proxy);
    ~PageReach();
    PageReach(const PageReach&) = delete;
    PageReach& operator=(const PageReach&) = delete;

    /// Records that a view shows a page from an address; empty for none.
    void show(WebKitUserContentManager* content, const std::string& document);
    /// Removes a view.
    void forget(WebKitUserContentManager* content);

private:
    void update();

    const PageKind kind_;
    const std::shared_ptr<SocketFilter> sockets_;
    const std::unique_ptr<PageProxy> proxy_;
    std::map<WebKitUserContentManager*, NetworkZone> reaches_;
};

} // namespace qoro
