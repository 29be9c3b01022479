#include "host/TagPage.h"

#include "kit/NetworkZone.h"
#include "platform/AddressParts.h"

#include <string_view>

namespace qoro
{

namespace
{

/// The host that names the page's network zone: what the page may reach is what the least inward of the ad's documents
/// may. A public page has a host in a domain without servers (RFC 2606, section 2).
std::string page_host(const vast::ResolvedAd& ad)
{
    std::string_view host = "vast.localhost"; // a document that is a file may reach everything
    NetworkZone zone = NetworkZone::Machine;
    for (const std::string& document : ad.documents) {
        if (document.empty() || zone_named_by(document) > zone)
            continue;
        zone = zone_named_by(document);
        host = AddressParts(document).host();
    }
    return zone == NetworkZone::Public ? "vast.invalid" : std::string(host);
}

} // namespace

std::string tag_page_address(const vast::ResolvedAd& ad, std::size_t n)
{
    return "http://" + page_host(ad) + "/vast-page-" + std::to_string(n) + ".html";
}

} // namespace qoro
