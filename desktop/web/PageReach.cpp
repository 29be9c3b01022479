#include "desktop/web/PageReach.h"

#include "desktop/net/PageProxy.h"
#include "desktop/net/Reach.h"
#include "desktop/web/SocketFilter.h"

#include <algorithm>
#include <utility>

namespace qoro
{

PageReach::PageReach(PageKind kind, std::shared_ptr<SocketFilter> sockets, std::unique_ptr<PageProxy> proxy)
    : kind_(kind), sockets_(std::move(sockets)), proxy_(std::move(proxy))
{
}

PageReach::~PageReach() = default;

void PageReach::show(WebKitUserContentManager* content, const std::string& document)
{
    sockets_->apply(content, std::max(zone_named_by(document), open_zone()));
    // A browser loads its document itself, so it may reach as far as the ad that named the document.
    reaches_[content] = kind_ == PageKind::Browsed ? reach_of(HttpAddress::parse(document)) : reach_of_page(document);
    update();
}

void PageReach::forget(WebKitUserContentManager* content)
{
    sockets_->forget(content);
    reaches_.erase(content);
    update();
}

void PageReach::update()
{
    if (!proxy_)
        return;
    NetworkZone least = reaches_.empty() ? NetworkZone::Public : NetworkZone::Machine;
    for (const auto& [content, reach] : reaches_)
        least = std::min(least, reach);
    proxy_->set_reach(least);
}

} // namespace qoro
