#include "host/desktop/ServedAd.h"

#include "desktop/net/AdServer.h"
#include "desktop/net/Reach.h"
#include "desktop/web/ScriptLibrary.h"
#include "formats/AdAddresses.h"
#include "formats/AdFile.h"
#include "platform/AddressParts.h"

#include <filesystem>
#include <optional>
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
        if (use == AdAddressUse::Tracker && AddressParts(address).names_no_server())
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

struct ServedAd::Serving {
    AdServer server;
    std::optional<NamedHosts> named;
};

ServedAd::ServedAd(std::shared_ptr<QoroVideoAd> ad, const std::string& folder, OnHit on_hit)
    : ad_(std::move(ad)),
      serving_(new Serving{
          .server =
              AdServer({.folder = folder, .trackers = tracker_paths(*ad_), .script = std::string(script_library())},
                       std::move(on_hit)),
          .named = {}})
{
    if (!serving_->server.listens())
        throw std::runtime_error("the ad's folder cannot be served: " + serving_->server.error());
    rewrite_addresses(*ad_, [base = base()](AdAddressUse, const std::string&, const std::string& address) {
        return address_on_server(address, base);
    });
    serving_->named.emplace(named_addresses(*ad_));
}

ServedAd::ServedAd(const std::string& file, OnHit on_hit)
    : ServedAd(read_ad_file(file), std::filesystem::absolute(file).parent_path().string(), std::move(on_hit))
{
}

ServedAd::~ServedAd() = default;

std::string ServedAd::base() const
{
    return serving_->server.base();
}

} // namespace qoro
