#include "host/desktop/ServedAd.h"

#include "desktop/net/AdServer.h"
#include "desktop/net/Reach.h"
#include "desktop/web/ScriptLibrary.h"
#include "formats/AdAddresses.h"
#include "formats/AdFile.h"
#include "platform/AddressParts.h"
#include "platform/HostCall.h"

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

namespace qoro
{

struct ServedAd::Serving {
    AdServer server;
    std::optional<NamedHosts> named;
};

namespace
{

/// A callback that may throw on the server's thread.
ServedAd::OnHit guarded(ServedAd::OnHit on_hit)
{
    if (!on_hit)
        return nullptr;
    return [on_hit = std::move(on_hit)](const AdServerHit& hit) {
        call_host("ServedAd::OnHit", nullptr, [&] { on_hit(hit); });
    };
}

} // namespace

ServedAd::ServedAd(std::shared_ptr<QoroVideoAd> ad, const std::string& folder, OnHit on_hit)
    : ad_(std::move(ad)),
      serving_(new Serving{
          .server = AdServer({.folder = folder, .script = std::string(script_library())}, guarded(std::move(on_hit))),
          .named = {}})
{
    AdServer& server = serving_->server;
    if (!server.listens())
        throw std::runtime_error("the ad's folder cannot be served: " + server.error());
    std::vector<std::string> trackers;
    std::vector<std::string> named;
    rewrite_addresses(*ad_,
                      [&, base = server.base()](AdAddressUse use, const std::string&, const std::string& address) {
                          std::string absolute = address_on_server(address, base);
                          if (use == AdAddressUse::Tracker && AddressParts(address).names_no_server())
                              trackers.emplace_back(AddressParts(absolute).path());
                          named.push_back(absolute);
                          return absolute;
                      });
    server.set_trackers(std::move(trackers));
    serving_->named.emplace(named);
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
