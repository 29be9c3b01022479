#include "formats/HostSetup.h"

#include "platform/QoroAdManager.h"

namespace qoro
{

HostSetup unguarded_host()
{
    HostSetup host;
    host.guard.reset();
    host.tracker_limit = false;
    host.root_view = CGSize{375, 812};
    return host;
}

NSURL store_page_of_id(const std::string& pattern)
{
    QoroAdManager with_pattern;
    with_pattern.set_store_page(pattern);
    return with_pattern.store_page({"id", "", "", ""});
}

bool is_store_page(const std::string& pattern)
{
    return pattern.find("{id}") != std::string::npos && store_page_of_id(pattern).is_web();
}

} // namespace qoro
