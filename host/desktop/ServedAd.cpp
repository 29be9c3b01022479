#include "host/desktop/ServedAd.h"

#include "desktop/web/ScriptLibrary.h"
#include "formats/AdAddresses.h"
#include "formats/AdFile.h"

#include <filesystem>
#include <stdexcept>
#include <utility>
#include <vector>

namespace qoro
{

namespace
{
/// Paths of the ad's relative trackers, which its own server answers.
std::vector<std::string> tracker_paths(QoroVideoAd& ad)
{
    std::vector<std::string> paths;
    rewrite_addresses(ad, [&paths](AdAddressUse use, const std::string&, const std::string& address) {
        if (use == AdAddressUse::Tracker && is_relative_address(address))
            paths.push_back(path_on_server(address_on_server(address, ""), ""));
        return address;
    });
    return paths;
}

std::vector<std::string> named_addresses(QoroVideoAd& ad)
{
    std::vector<std::string> addresses;
    rewrite_addresses(ad, [&addresses](AdAddressUse, const std::string&, const std::string& address) {
        addresses.push_back(address);
        return address;
    });
    return addresses;
}
} // namespace

ServedAd::ServedAd(std::shared_ptr<QoroVideoAd> ad, const std::string& folder, AdServer::OnHit on_hit)
    : ad_(std::move(ad))
{
    server_ = std::make_unique<AdServer>(
        AdServerContent{.folder = folder, .trackers = tracker_paths(*ad_), .script = std::string(script_library())},
        std::move(on_hit));
    if (!server_->listens())
        throw std::runtime_error("the ad's folder cannot be served: " + server_->error());
    rewrite_addresses(*ad_, [base = server_->base()](AdAddressUse, const std::string&, const std::string& address) {
        return address_on_server(address, base);
    });
    named_.emplace(named_addresses(*ad_));
}

ServedAd::ServedAd(const std::string& file, AdServer::OnHit on_hit)
    : ServedAd(read_ad_file(file), std::filesystem::absolute(file).parent_path().string(), std::move(on_hit))
{
}

} // namespace qoro
